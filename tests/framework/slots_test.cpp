// Hosts built by another compiler call by slot number, so every interface's order is tried by raw vtable
// access. The numbers beside the operations below are the binary contract.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "aveffect/base_media.h"
#include "aveffect/base_property.h"
#include "aveffect/base_tools.h"
#include "aveffect/plugin.h"

namespace {

using namespace AVBased;

int g_called = 0;

#define SLOT(number, Result, ...)                                                                            \
    Result __VA_ARGS__ override {                                                                            \
        g_called = number;                                                                                   \
        return static_cast<Result>(0);                                                                       \
    }

// Calls every slot of an interface with zero arguments and expects the operation of that number each time.
template <class Interface, class Probe>
void ExpectSlots(int count) {
    Probe probe;
    Interface* object = &probe;
    using Function = void (*)(void*, void*, void*, void*, void*, void*, void*);
    Function* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    for (int slot = 1; slot <= count; ++slot) {
        g_called = 0;
        table[slot - 1](object, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_EQ(g_called, slot);
    }
}

class ExceptionProbe final : public IBaseException {
    int GetExceptionCode() const override { return g_called = 1; }
    const char* GetExceptionMsg() const override {
        g_called = 2;
        return nullptr;
    }
    const char* GetExceptionSource(int*) const override {
        g_called = 3;
        return nullptr;
    }
    SLOT(4, void, SetException(int, const char*, int, const char*))
    SLOT(5, void, Clear())
    SLOT(6, void, Copy(IBaseException*))
};

class LoggerProbe final : public IBaseLogger {
    SLOT(1, void, Write(int, const char*, const char*, int, int))
};

class StringProbe final : public IString {
    SLOT(1, const char*, GetStr())
    SLOT(2, void, SetStr(const char*))
    SLOT(3, unsigned, GetStrLength())
    SLOT(4, unsigned, GetDataSize())
    SLOT(5, const void*, GetData())
    SLOT(6, void, SetData(const void*, unsigned))
    SLOT(7, void, Concat(const char*))
    SLOT(8, void, Append(const void*, unsigned))
    SLOT(9, void, Clear())
    SLOT(10, bool, isEmpty())
    SLOT(11, void, Free())
};

class StringsProbe final : public IStrings {
    SLOT(1, void, Free())
    SLOT(2, int, GetCount())
    SLOT(3, int, Add(IString*))
    SLOT(4, int, AddString(const char*))
    SLOT(5, int, Insert(int, IString*))
    SLOT(6, int, InsertString(int, const char*))
    SLOT(7, bool, Remove(int))
    SLOT(8, int, Find(IString*))
    SLOT(9, int, FindString(const char*))
    SLOT(10, IString*, GetString(int))
    SLOT(11, void, Clear())
};

template <class Interface>
class ProcProbe : public Interface {
    SLOT(1, void*, GetInterface(const char*))
    SLOT(2, void, Free())
    SLOT(3, unsigned, GetType())
    SLOT(4, unsigned, GetSubType())
    SLOT(5, const char*, GetName())
    SLOT(6, bool, SetProperty(const char*, const char*))
    SLOT(7, const char*, GetProperty(const char*, int*))
    SLOT(8, IStrings*, GetPropertyNames())
};

class VideoProbe final : public ProcProbe<IVideoProc> {
    SLOT(9, bool, Seek(unsigned))
    SLOT(10, unsigned, GetDuration())
    SLOT(11, IRawVideoFrame*, ProcFrame(ImagePostion*, int, IRawVideoFrame*))
    SLOT(12, void, ProcFrameInPlace(ImagePostion*, int, IRawVideoFrame*))
    SLOT(13, void, BlendFrame(const ImagePostion*, int, IRawVideoFrame*, IRawVideoFrame*))
};

class AudioProbe final : public ProcProbe<IAudioProc> {
    SLOT(9, bool, Seek(long long))
    SLOT(10, int, GetDuration())
    SLOT(11, IRawAudioFrame*, ProcFrame(IRawAudioFrame*))
    SLOT(12, void, ProcFrameInPlace(IRawAudioFrame*))
};

class PropertyProbe final : public IAVBaseProperty {
    SLOT(1, bool, GetProp(const char*, int*))
};

class VideoFrameProbe final : public IRawVideoFrame {
    SLOT(1, unsigned, GetPixelFormat())
    SLOT(2, void, GetDimension(unsigned*, unsigned*))
    SLOT(3, int, GetTimeStamp())
    SLOT(4, void, SetTimeStamp(int))
    SLOT(5, bool, IsTopDown())
    SLOT(6, bool, IsPacked())
    SLOT(7, unsigned, GetBufferCount())
    SLOT(8, unsigned, GetTotalSize())
    SLOT(9, unsigned char*, GetBuffer(unsigned, unsigned*, unsigned*, unsigned*))
    SLOT(10, double, GetDAR())
    SLOT(11, bool, CropRightAndBottom(unsigned, unsigned))
    SLOT(12, void, Free())
    SLOT(13, unsigned, GetDuration())
    SLOT(14, void, SetDuration(unsigned))
    SLOT(15, unsigned, GetDuplicatedCount(unsigned*))
    SLOT(16, void, SetDuplicatedCount(unsigned, unsigned))
    SLOT(17, IRawVideoFrame*, Clone())
    SLOT(18, bool, CanBeModified())
    SLOT(19, void, SetCanBeModified(bool))
    SLOT(20, bool, IsInterlaced())
    SLOT(21, void, SetInterlaced(bool))
    SLOT(22, bool, IsTopFieldFirst())
    SLOT(23, void, SetTopFieldFirst(bool))
    SLOT(24, void, SetBorderData(void*, int))
    SLOT(25, void, GetBorderData(void**, int*))
    SLOT(26, void*, GetInterface(const char*))
};

class ViewProbe final : public IMVCRawVideoFrame {
    SLOT(1, bool, SetViewID(int))
    SLOT(2, int, GetViewID())
};

class AudioFrameProbe final : public IRawAudioFrame {
    SLOT(1, int, GetSampleFormat())
    SLOT(2, unsigned, GetSampleRate())
    SLOT(3, int, GetChannels())
    SLOT(4, unsigned, GetChannelLayout())
    SLOT(5, bool, IsInterleaved())
    SLOT(6, bool, IsLittleEndian())
    SLOT(7, unsigned, GetSampleCount())
    SLOT(8, unsigned char*, GetBuffer(int, unsigned*))
    SLOT(9, unsigned, GetTimeStamp())
    SLOT(10, void, SetTimeStamp(unsigned))
    SLOT(11, void, Release())
    SLOT(12, IRawAudioFrame*, Clone())
};

class ConverterProbe final : public IImageConverter {
    SLOT(1, IRawVideoFrame*, Convert(IRawVideoFrame*))
    SLOT(2, void, Release())
};

class CropPanProbe final : public IRawVideoFrameCropPan {
    SLOT(1, void, SetLeft(unsigned))
    SLOT(2, void, SetTop(unsigned))
    SLOT(3, void, SetRight(unsigned))
    SLOT(4, void, SetBottom(unsigned))
    SLOT(5, IRawVideoFrame*, Process(IRawVideoFrame*))
    SLOT(6, void, Release())
};

class ResamplerProbe final : public IAudioResampler {
    SLOT(1, IRawAudioFrame*, Convert(IRawAudioFrame*))
    SLOT(2, void, Destroy())
};

class ManagerProbe final : public IAVManager {
    SLOT(1, IAVReader*, OpenSource(const char*, const char*, unsigned*, unsigned*, unsigned*, unsigned*))
};

class ReaderProbe final : public IAVReader {
    SLOT(1, bool, ReadItem(AVItem*, unsigned, unsigned))
    SLOT(2, bool, Seek(unsigned))
    SLOT(3, unsigned, GetDuration())
    SLOT(4, void, Release())
};

TEST(Slots, StandWhereTheContractPutsThem) {
    ExpectSlots<IBaseException, ExceptionProbe>(6);
    ExpectSlots<IBaseLogger, LoggerProbe>(1);
    ExpectSlots<IString, StringProbe>(11);
    ExpectSlots<IStrings, StringsProbe>(11);
    ExpectSlots<IVideoProc, VideoProbe>(13);
    ExpectSlots<IAudioProc, AudioProbe>(12);
    ExpectSlots<IAVBaseProperty, PropertyProbe>(1);
    ExpectSlots<IRawVideoFrame, VideoFrameProbe>(26);
    ExpectSlots<IMVCRawVideoFrame, ViewProbe>(2);
    ExpectSlots<IRawAudioFrame, AudioFrameProbe>(12);
    ExpectSlots<IImageConverter, ConverterProbe>(2);
    ExpectSlots<IRawVideoFrameCropPan, CropPanProbe>(6);
    ExpectSlots<IAudioResampler, ResamplerProbe>(2);
    ExpectSlots<IAVManager, ManagerProbe>(1);
    ExpectSlots<IAVReader, ReaderProbe>(4);
}

TEST(Slots, MediaItemHasTheAgreedLayout) {
    EXPECT_EQ(offsetof(AVItem, object), 0u);
    EXPECT_EQ(offsetof(AVItem, position), 8u);
    EXPECT_EQ(offsetof(AVItem, stream), 16u);
    EXPECT_EQ(offsetof(AVItem, length), 20u);
    EXPECT_EQ(offsetof(AVItem, kind), 24u);
    EXPECT_EQ(sizeof(ImagePostion), 16u);
}

} // namespace
