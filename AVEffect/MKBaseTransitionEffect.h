#pragma once
/// What transitions share: two still pictures from files that the properties name, fitted to the frame, and
/// the frame drawn from them. The frame gives size, format and time; of its picture only what a transition
/// leaves is seen again.
#include <string>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/transition_canvas.h"
#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"
#include "aveffect/media.h"

namespace AVBased {

/// Every operation ends its own errors: they go into the thread's record, and false comes back.
class CMkBaseTransitionEffect : public CBasedVideoImageEffect {
public:
    /// The manager stays the host's and is asked when the first frame comes.
    CMkBaseTransitionEffect(IAVManager* manager, const std::string& name);
    ~CMkBaseTransitionEffect() override;

    /// "duration" and whatever else is not a transition's own changes its text alone.
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

    /// Frames of other formats are drawn on as BGRA; the way back is to the format of the first such frame.
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;

    /// Draws into a BGRA frame. The pictures are null or have its size and format; time is in the unit of the
    /// times that are properties. False with an error recorded when nothing could be drawn.
    virtual bool BaseTransition(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second,
                                int time) = 0;

    /// Loads the pictures unless one is there, fits them, and draws.
    bool InnerProcFrame2(ImagePostion* position, int time, IRawVideoFrame* out);
    /// Reads both pictures. One whose file has none among its first 30 items, or can't be opened, is null.
    bool PrepareElements();
    /// Frees pictures, converters and the crop/pan frame.
    bool ReleaseElements();
    /// Replaces the picture by a copy of that size in pixels and format, its aspect ratio kept by margins.
    /// One that has the size already stays as it is.
    bool GetTheResizedImage(IRawVideoFrame** picture, int width, int height, unsigned int pixelFormat);

protected:
    /// To be called by BaseTransition when it leaves the frame's own picture, in whole or in part.
    void LeaveFrame() { m_bLeft = true; }
    /// Whether they differ by no more than 0.0001.
    static bool MkEq(double a, double b);

    int StartTime() const { return m_nStartTime; }
    int EndTime() const { return static_cast<int>(m_nSourceDur); }
    /// A span that ends where it begins, or before, is at its end at once.
    bool IsCut() const { return EndTime() <= m_nStartTime; }
    /// From the start to that time. Differences of times wrap.
    double Since(int time) const;
    /// Of the way from start to end, beyond 1 too.
    double Progress(int time) const { return IsCut() ? 1 : Since(time) / Since(EndTime()); }

    /// The body of every BaseTransition: checks the frames, shows the first picture before the start, and
    /// leaves the rest to draw(Canvas).
    template <class Draw>
    bool DrawFromStart(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second, int time,
                       const Draw& draw) {
        return BaseTool::Guarded(false, [&] {
            const Canvas canvas = MakeCanvas(out, first, second);
            if (canvas.Empty()) return true;
            if (time < m_nStartTime)
                CopyPicture(canvas.out, canvas.first);
            else
                draw(canvas);
            return true;
        });
    }

private:
    IRawVideoFrame* ReadPicture(const std::string& path);
    void ConvertPicture(IRawVideoFrame** picture, unsigned width, unsigned height, unsigned format);
    void PlaceInMargins(IRawVideoFrame** picture, unsigned width, unsigned height);
    bool FitPicture(IRawVideoFrame** picture, IRawVideoFrame* out);
    void ConvertFrame(IRawVideoFrame* frame);
    void ProcConverted(ImagePostion* position, int time, IRawVideoFrame* frame);

    IAVManager* m_pManager;
    unsigned m_nSourceDur;
    std::string m_strPath1;
    std::string m_strPath2;
    IRawVideoFrame* m_pFirst = nullptr;
    IRawVideoFrame* m_pSecond = nullptr;
    int m_nStartTime;
    IImageConverter* m_pToBgra = nullptr; // made on first need, as is the next
    IImageConverter* m_pBack = nullptr;
    IRawVideoFrame* m_pWorking = nullptr; // BGRA, of the last frame of another format
    bool m_bLeft = false;
    IRawVideoFrameCropPan* m_pCropPan = nullptr;
    IImageConverter* m_pScaler = nullptr; // of the last fit, as are the pictures
    IRawVideoFrame* m_pScaled = nullptr;
    IRawVideoFrame* m_pPadded = nullptr;
};

} // namespace AVBased
