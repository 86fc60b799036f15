#include "AVEffect/MKBaseTransitionEffect.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

#include "avbase/avbase_srcutils/avbase_url.h"
#include "avbase/avbase_srcutils/holders.h"
#include "aveffect/catalogue/transitions.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

constexpr unsigned kQuality = 4; // bicubic
constexpr uint32_t kVideoItem = 1;
constexpr unsigned kReadVideo = 1;
constexpr unsigned kNoTimeout = 0xFFFFFFFFu;
constexpr int kMostReads = 30;

template <class Object>
void Replace(Object*& member, Object* object = nullptr) {
    const Owned<Object> previous(std::exchange(member, object));
}

// What can't be had is a null pointer somewhere.
template <class Object>
Object* NotNull(Object* object) {
    if (!object) Raise(kBadPointer, "Bad pointer");
    return object;
}

IImageConverter* MakeConverter(unsigned format, unsigned width, unsigned height) {
    IImageConverter* converter = CreateImageConverterEx(format, width, height, kQuality);
    if (!converter) assert(0);
    return converter;
}

struct Size {
    unsigned width = 0, height = 0;

    explicit Size(IRawVideoFrame* frame) { frame->GetDimension(&width, &height); }
    Size(unsigned w, unsigned h)
        : width(w)
        , height(h) {}
    bool operator==(const Size&) const = default;
    bool Empty() const { return width == 0 || height == 0; }
};

// The largest size of the picture's shape inside the target.
Size Fitted(const Size& picture, const Size& target) {
    const double targetRatio = static_cast<double>(target.width) / target.height;
    const double ratio = static_cast<double>(picture.width) / picture.height;
    if (targetRatio >= ratio)
        return {std::max(1u, static_cast<unsigned>(ratio * target.height)), target.height};
    const double inverse = static_cast<double>(picture.height) / picture.width;
    return {target.width, std::max(1u, static_cast<unsigned>(target.width * inverse))};
}

// Planar formats without alpha.
bool IsOpaque(unsigned format) {
    const FormatLayout* layout = FindPixelFormat(format);
    return IsEffectFormat(format) && layout->planeCount == 3;
}

// As much of the picture as both frames have: a host may count the chroma of odd sizes otherwise than the
// converter, and the converter keeps to the first frame's format.
void CopyPlanes(IRawVideoFrame* to, IRawVideoFrame* from) {
    const unsigned count = std::min(to->GetBufferCount(), from->GetBufferCount());
    for (unsigned i = 0; i < count; ++i) CopyRows(FilledPlane(to, i), FilledPlane(from, i));
}

} // namespace

CMkBaseTransitionEffect::CMkBaseTransitionEffect(IAVManager* manager, const std::string& name)
    // All transitions have the same properties.
    : CBasedVideoImageEffect(catalogue::kCrossFade, name.c_str())
    , m_pManager(manager) {
    StartFrom("EffectPropSourceDur", &m_nSourceDur);
    StartFrom("EffectPropVFPath1", &m_strPath1);
    StartFrom("EffectPropVFPath2", &m_strPath2);
    StartFrom("EffectPropStartTime", &m_nStartTime);
    m_pCropPan = CreateRawVideoFrameCropPan(); // last: nothing frees it when a constructor fails
}

CMkBaseTransitionEffect::~CMkBaseTransitionEffect() { ReleaseElements(); }

void CMkBaseTransitionEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    if (name == "EffectPropSourceDur") m_nSourceDur = static_cast<unsigned>(node.value.int32);
    if (name == "EffectPropVFPath1") m_strPath1 = node.text;
    if (name == "EffectPropVFPath2") m_strPath2 = node.text;
    if (name == "EffectPropStartTime") m_nStartTime = node.value.int32;
}

bool CMkBaseTransitionEffect::MkEq(double a, double b) { return std::fabs(a - b) <= 0.0001; }

double CMkBaseTransitionEffect::Since(int time) const {
    return static_cast<int>(static_cast<unsigned>(time) - static_cast<unsigned>(m_nStartTime));
}

bool CMkBaseTransitionEffect::ReleaseElements() {
    Replace(m_pFirst);
    Replace(m_pSecond);
    Replace(m_pToBgra);
    Replace(m_pBack);
    Replace(m_pPadded);
    Replace(m_pScaled);
    Replace(m_pCropPan);
    Replace(m_pScaler);
    Replace(m_pWorking);
    return true;
}

IRawVideoFrame* CMkBaseTransitionEffect::ReadPicture(const std::string& path) {
    if (path.empty()) return nullptr;
    CSourceURL url(path);
    unsigned streams = 0, width = 0, height = 0, duration = 0; // not of interest
    const Owned<IAVReader> reader(
        m_pManager->OpenSource(url.GetURL(), nullptr, &streams, &width, &height, &duration));
    if (!reader) return nullptr;
    for (int i = 0; i < kMostReads; ++i) {
        AVItem item = {nullptr, -1, 0, 0xFFFFFFFFu, 0};
        if (!reader->ReadItem(&item, kReadVideo, kNoTimeout)) return nullptr;
        if (item.kind == kVideoItem && item.object)
            return NotNull(static_cast<IRawVideoFrame*>(item.object)->Clone());
    }
    return nullptr;
}

bool CMkBaseTransitionEffect::PrepareElements() {
    return Guarded(false, [&] {
        NotNull(m_pManager);
        Replace(m_pFirst);
        Replace(m_pSecond);
        m_pFirst = ReadPicture(m_strPath1);
        m_pSecond = ReadPicture(m_strPath2);
        return true;
    });
}

void CMkBaseTransitionEffect::ConvertPicture(IRawVideoFrame** picture, unsigned width, unsigned height,
                                             unsigned format) {
    Replace(m_pScaler, MakeConverter(format, width, height));
    Replace(m_pScaled);
    m_pScaled = NotNull(m_pScaler->Convert(*picture));
}

void CMkBaseTransitionEffect::PlaceInMargins(IRawVideoFrame** picture, unsigned width, unsigned height) {
    const Size scaled(m_pScaled);
    if (scaled.width > width || scaled.height > height)
        Raise(kUnknownException, "a picture could not be made to fit the frame");
    if (!m_pCropPan) m_pCropPan = CreateRawVideoFrameCropPan(); // it could not be had before
    IRawVideoFrameCropPan* cropPan = NotNull(m_pCropPan);
    const bool wide = scaled.width >= width;
    const unsigned top = wide ? (height - scaled.height) >> 1 : 0;
    const unsigned bottom = wide ? height - top - scaled.height : 0;
    const unsigned left = wide ? 0 : (width - scaled.width) >> 1;
    const unsigned right = wide ? 0 : width - left - scaled.width;
    cropPan->SetLeft(left);
    cropPan->SetTop(top);
    cropPan->SetRight(right);
    cropPan->SetBottom(bottom);
    IRawVideoFrame* fitted = m_pScaled;
    if (left || top || right || bottom) {
        Replace(m_pPadded);
        fitted = m_pPadded = NotNull(cropPan->Process(m_pScaled));
    }
    // Cloned first: should that fail, the picture that was there can be fitted to a later frame.
    Replace(*picture, NotNull(fitted->Clone()));
    Replace(m_pPadded);
    Replace(m_pScaled);
}

bool CMkBaseTransitionEffect::GetTheResizedImage(IRawVideoFrame** picture, int width, int height,
                                                 unsigned int pixelFormat) {
    return Guarded(false, [&] {
        if (!picture || !*picture) Raise(kBadPointer, "Bad pointer");
        const Size held(*picture), target(static_cast<unsigned>(width), static_cast<unsigned>(height));
        if (held == target) return true;
        if (held.Empty() || width <= 0 || height <= 0)
            Raise(kUnknownException, "a picture without a pixel can't be fitted");
        const Size fitted = Fitted(held, target);
        ConvertPicture(picture, fitted.width, fitted.height, pixelFormat);
        PlaceInMargins(picture, target.width, target.height);
        return true;
    });
}

// Null pictures are left to the transition.
bool CMkBaseTransitionEffect::FitPicture(IRawVideoFrame** picture, IRawVideoFrame* out) {
    if (!*picture) return true;
    const Size target(out);
    const unsigned format = out->GetPixelFormat();
    if (target.Empty()) return true;
    if (Size(*picture) != target)
        return GetTheResizedImage(picture, static_cast<int>(target.width), static_cast<int>(target.height),
                                  format);
    if ((*picture)->GetPixelFormat() == format) return true;
    ConvertPicture(picture, target.width, target.height, format);
    PlaceInMargins(picture, target.width, target.height);
    return true;
}

bool CMkBaseTransitionEffect::InnerProcFrame2(ImagePostion*, int time, IRawVideoFrame* out) {
    return Guarded(false, [&] {
        NotNull(out);
        if (!m_pFirst && !m_pSecond && !PrepareElements()) return false;
        if (!FitPicture(&m_pFirst, out) || !FitPicture(&m_pSecond, out)) return false;
        return BaseTransition(out, m_pFirst, m_pSecond, time);
    });
}

void CMkBaseTransitionEffect::ConvertFrame(IRawVideoFrame* frame) {
    Replace(m_pWorking);
    m_pWorking = NotNull(m_pToBgra->Convert(frame));
}

// Transitions draw every colour anew, so the last frame's BGRA does as well as this one's; alpha they leave.
void CMkBaseTransitionEffect::ProcConverted(ImagePostion* position, int time, IRawVideoFrame* frame) {
    if (!m_pToBgra) m_pToBgra = MakeConverter(BGRA, 0, 0);
    if (!m_pBack) m_pBack = MakeConverter(frame->GetPixelFormat(), 0, 0);
    const bool converted =
        !m_pWorking || Size(m_pWorking) != Size(frame) || !IsOpaque(frame->GetPixelFormat());
    if (converted) ConvertFrame(frame);
    m_bLeft = false;
    if (!InnerProcFrame2(position, time, m_pWorking)) return;
    if (m_bLeft && !converted) ConvertFrame(frame);
    const Owned<IRawVideoFrame> back(NotNull(m_pBack->Convert(m_pWorking)));
    CopyPlanes(frame, back.get());
}

void CMkBaseTransitionEffect::InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) {
    Guarded([&] {
        NotNull(frame);
        const int place = time == kTimeFromFrame ? frame->GetTimeStamp() : time;
        if (frame->GetPixelFormat() == BGRA)
            InnerProcFrame2(position, place, frame);
        else
            ProcConverted(position, place, frame);
    });
}

} // namespace AVBased
