#include "python/core/work_picture.h"

#include <cstring>
#include <new>

#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/planar_functions.h>

#include "aveffect/pixel_format.h"
#include "mediabridge/flatten.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

// A contiguous array of the same samples: itself where it is.
py::array Contiguous(const py::array& array) { return py::array::ensure(array, py::array::c_style); }

const uint8_t* Samples(const py::array& array) { return static_cast<const uint8_t*>(array.data()); }
uint8_t* Samples(py::array& array) { return static_cast<uint8_t*>(array.mutable_data()); }

// The library names pixels by words of the processor: its ARGB are bytes B, G, R, A.
void ToBgra(PixelOrder order, const uint8_t* from, uint8_t* to, int width, int height) {
    switch (order) {
    case PixelOrder::Bgra:
        libyuv::ARGBCopy(from, width * 4, to, width * 4, width, height);
        break;
    case PixelOrder::Rgba:
        libyuv::ABGRToARGB(from, width * 4, to, width * 4, width, height);
        break;
    case PixelOrder::Bgr:
        libyuv::RGB24ToARGB(from, width * 3, to, width * 4, width, height);
        break;
    case PixelOrder::Rgb:
        libyuv::RAWToARGB(from, width * 3, to, width * 4, width, height);
        break;
    case PixelOrder::Grey:
        libyuv::J400ToARGB(from, width, to, width * 4, width, height);
        break;
    }
}

void FromBgra(PixelOrder order, const uint8_t* from, uint8_t* to, int width, int height) {
    switch (order) {
    case PixelOrder::Bgra:
        libyuv::ARGBCopy(from, width * 4, to, width * 4, width, height);
        break;
    case PixelOrder::Rgba:
        libyuv::ARGBToABGR(from, width * 4, to, width * 4, width, height);
        break;
    case PixelOrder::Bgr:
        libyuv::ARGBToRGB24(from, width * 4, to, width * 3, width, height);
        break;
    case PixelOrder::Rgb:
        libyuv::ARGBToRAW(from, width * 4, to, width * 3, width, height);
        break;
    case PixelOrder::Grey:
        libyuv::ARGBToJ400(from, width * 4, to, width, width, height);
        break;
    }
}

} // namespace

WorkPicture::WorkPicture(const ArrayPicture& source, const ArrayPicture& target, bool ownOrder)
    : m_target(target)
    , m_direct(target.IsPlain() && (!target.IsPacked() || *target.order == PixelOrder::Bgra ||
                                    (*target.order == PixelOrder::Rgba && ownOrder)))
    , m_picture{target.format, target.width, target.height, {}} {
    size_t bytes = 0;
    for (const py::array& plane : target.planes) {
        const auto rows = static_cast<unsigned>(plane.shape(0));
        const unsigned width = static_cast<unsigned>(plane.shape(1)) * (target.IsPacked() ? 4 : 1);
        m_picture.planes.push_back({nullptr, width, width, rows});
        bytes += size_t{width} * rows;
    }
    if (!m_direct) m_memory.resize(bytes);
    uint8_t* place = m_memory.data();
    for (size_t i = 0; i < m_picture.planes.size(); ++i) {
        AVBased::MemoryFrame::Plane& plane = m_picture.planes[i];
        plane.data = m_direct ? Samples(m_target.planes[i]) : place;
        if (!m_direct) place += size_t{plane.pitch} * plane.rows;
    }
    Load(source);
}

void WorkPicture::Load(const ArrayPicture& source) {
    for (size_t i = 0; i < source.planes.size(); ++i) {
        const AVBased::MemoryFrame::Plane& plane = m_picture.planes[i];
        if (m_direct && source.planes[i].is(m_target.planes[i])) continue;
        const py::array from = Contiguous(source.planes[i]);
        if (source.IsPacked() && !m_direct)
            ToBgra(*source.order, Samples(from), plane.data, static_cast<int>(source.width),
                   static_cast<int>(source.height));
        else // arrays may overlap
            std::memmove(plane.data, Samples(from), size_t{plane.pitch} * plane.rows);
    }
}

void WorkPicture::Finish(bool flatten) {
    if (m_direct) return;
    if (flatten && !m_target.HasAlpha()) Flatten();
    ArrayPicture made = m_target.IsPlain() ? m_target : NewLike(m_target);
    for (size_t i = 0; i < made.planes.size(); ++i) {
        const AVBased::MemoryFrame::Plane& plane = m_picture.planes[i];
        if (made.IsPacked())
            FromBgra(*made.order, plane.data, Samples(made.planes[i]), static_cast<int>(made.width),
                     static_cast<int>(made.height));
        else
            std::memcpy(Samples(made.planes[i]), plane.data, size_t{plane.pitch} * plane.rows);
    }
    if (!m_target.IsPlain()) CopySamples(made, m_target);
}

void WorkPicture::Flatten() {
    mediabridge::AVFramePtr frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    frame->format = AV_PIX_FMT_BGRA;
    frame->width = static_cast<int>(m_picture.width);
    frame->height = static_cast<int>(m_picture.height);
    if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
    const AVBased::MemoryFrame::Plane& plane = m_picture.planes.front();
    const auto pitch = static_cast<int>(plane.pitch);
    libyuv::ARGBCopy(plane.data, pitch, frame->data[0], frame->linesize[0], frame->width, frame->height);
    frame = mediabridge::FlattenOverBlack(std::move(frame));
    if (!frame) throw std::bad_alloc();
    libyuv::ARGBCopy(frame->data[0], frame->linesize[0], plane.data, pitch, frame->width, frame->height);
}

} // namespace aveffect::python
