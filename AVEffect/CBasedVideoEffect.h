#pragma once
/// The bases of video effects. A derived effect registers its interfaces and properties in its constructor,
/// follows property changes, and changes frames in InnerProcFrame; checks, copies and the error boundary are
/// here.
#include "AVEffect/CProcessor.h"

namespace AVBased {

/// A video processor with the "duration" property that does nothing yet.
class CBasedVideoEffect : public CProcessor<IVideoProc> {
public:
    CBasedVideoEffect(const char* name, unsigned subType);

    ~CBasedVideoEffect() override = default;

    bool Seek(unsigned int position) override;
    unsigned int GetDuration() override { return m_nDuration; }
    IRawVideoFrame* ProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
    void ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) override;
    void BlendFrame(const ImagePostion* position, int time, IRawVideoFrame* first,
                    IRawVideoFrame* second) override;

protected:
    unsigned m_nDuration;
};

/// Effects that move a picture in place.
class CBasedVideoMotionXYEffect : public CBasedVideoEffect {
public:
    explicit CBasedVideoMotionXYEffect(const char* name)
        : CBasedVideoEffect(name, 1) {}
    void ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) override;

protected:
    virtual void InnerProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) = 0;
};

/// Effects that change a picture's bytes: all of this plug-in's.
class CBasedVideoImageEffect : public CBasedVideoEffect {
public:
    /// With the properties of its row, and the row's name or another one.
    explicit CBasedVideoImageEffect(const EffectInfo& effect)
        : CBasedVideoImageEffect(effect, effect.name) {}
    CBasedVideoImageEffect(const EffectInfo& effect, const char* name);
    /// Without a row: "duration" is its only property.
    explicit CBasedVideoImageEffect(const char* name)
        : CBasedVideoEffect(name, kSubTypeImage) {}
    ~CBasedVideoImageEffect() override;

    IRawVideoFrame* ProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
    void ProcFrameInPlace(ImagePostion* position, int time, IRawVideoFrame* frame) override;

    /// Changes the frame, which is not null. Formats that the effect does not serve are left as they are.
    virtual void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) = 0;

private:
    static constexpr unsigned kSubTypeImage = 2;

    IRawVideoFrame* m_pCurFrame = nullptr; // the copy that the last ProcFrame returned, owned
};

/// Effects that change a picture's size; they can't work on a copy.
class CBasedVideoMotionSizingEffect : public CBasedVideoEffect {
public:
    explicit CBasedVideoMotionSizingEffect(const char* name)
        : CBasedVideoEffect(name, 4) {}
    IRawVideoFrame* ProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

/// Effects that blend two pictures; a derived class must say how.
class CBasedVideoBlender : public CBasedVideoEffect {
public:
    explicit CBasedVideoBlender(const char* name)
        : CBasedVideoEffect(name, 8) {}
    void BlendFrame(const ImagePostion* position, int time, IRawVideoFrame* first,
                    IRawVideoFrame* second) override;
};

} // namespace AVBased
