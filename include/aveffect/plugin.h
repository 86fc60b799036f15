#pragma once
/// The plug-in (libAVEffect.so): processors and the two functions that make them.
///
/// A processor lives until its Free(). Texts that it returns stay valid until the property changes. A
/// processor and the frames given to it are used by one thread at a time; different processors may run on
/// different threads. No operation throws, whatever the host's own objects throw into it: failures return
/// null, false, 0 or -1 and leave an error in the calling thread's record. Mistakes of the caller's program,
/// such as a null name, end the process by an assertion.
#include "aveffect/audio_frame.h"
#include "aveffect/media.h"
#include "aveffect/name_list.h"
#include "aveffect/video_frame.h"

namespace AVBased {

/// What every processor can do.
class IAVProc {
public:
    /// A further interface by name ("IVideoProc", "IAudioProc", of some "EffectInterfaceNameProp", see
    /// base_property.h), null with an error recorded when there is none.
    virtual void* GetInterface(const char* name) = 0;
    /// Deletes the processor.
    virtual void Free() = 0;
    /// 1 video, 2 audio.
    virtual unsigned GetType() = 0;
    /// Refinement of the type: 2 for every effect of this plug-in.
    virtual unsigned GetSubType() = 0;
    /// The name that the factory was asked for.
    virtual const char* GetName() = 0;
    /// Sets a property from its text; false when there is no such property. Allowed between frames.
    virtual bool SetProperty(const char* name, const char* value) = 0;
    /// A property's text as last set; its type code goes to *type unless type is null (0 text, 1 double, 2
    /// 64-bit integer, 3 integer, 4 16-bit integer). Asking for a property that does not exist ends the
    /// process.
    virtual const char* GetProperty(const char* name, int* type) = 0;
    /// The property names in byte-wise order; the caller's to Free().
    virtual IStrings* GetPropertyNames() = 0;

protected:
    ~IAVProc() = default;
};

/// A record of the host's that is passed along with every frame; no effect reads it. It must not be null.
struct ImagePostion {
    int left, top, right, bottom;
};

/// Time argument: no time is given, the frame's own time stamp counts.
inline constexpr int kTimeFromFrame = -2147483647 - 1;

/// A video effect.
class IVideoProc : public IAVProc {
public:
    virtual bool Seek(unsigned int position) = 0;
    /// The "duration" property.
    virtual unsigned int GetDuration() = 0;
    /// Works on a copy of the frame, which stays the processor's and is valid until its next call. Null on
    /// failure. Time is in the unit of "duration", or kTimeFromFrame.
    virtual IRawVideoFrame* ProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) = 0;
    /// Changes the frame itself.
    virtual void ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) = 0;
    /// Does nothing in this plug-in's effects.
    virtual void BlendFrame(const ImagePostion* position, int time, IRawVideoFrame* first,
                            IRawVideoFrame* second) = 0;

protected:
    ~IVideoProc() = default;
};

/// An audio effect.
class IAudioProc : public IAVProc {
public:
    virtual bool Seek(long long position) = 0;
    /// The "duration" property.
    virtual int GetDuration() = 0;
    /// Works on a copy of the frame, valid until the next call; the last one is left to the host to Release()
    /// when the processor has been freed. Null on failure.
    virtual IRawAudioFrame* ProcFrame(IRawAudioFrame* frame) = 0;
    /// Changes the frame itself.
    virtual void ProcFrameInPlace(IRawAudioFrame* frame) = 0;

protected:
    ~IAudioProc() = default;
};

} // namespace AVBased

extern "C" {

/// A new video processor by effect name (see catalogue.h), the caller's to Free(). The manager may be null
/// except for transitions, which read their files through it. Null with an error recorded when there is no
/// such effect.
AVBased::IVideoProc* CreateVideoProc(AVBased::IAVManager* manager, const char* name);

/// The same for audio processors.
AVBased::IAudioProc* CreateAudioProc(AVBased::IAVManager* manager, const char* name);
}
