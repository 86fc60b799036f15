#pragma once
/// What can be told to go wrong outside the plug-in.
#include <atomic>
#include <stdexcept>

namespace test {

/// Where.
enum class Place {
    Nowhere,
    Open,
    Duration,
    Read,
    Nonsense, ///< items without an object, of no known kind, and no end of them
    Seek,
    ReleaseReader,
    SourceClone, ///< of what a reader gives, as are the next two
    SourceBuffer,
    SourceFree,
    Clone, ///< of the frames to process, as are the next two
    Buffer,
    Free,
    MakeConverter,
    Convert,
    ReleaseConverter,
    MakeCropPan,
    Pad,
    ReleaseCropPan,
    MakeResampler,
    Resample,
    DestroyResampler,
    End
};

enum class How { Nothing, Exception, Oddity };

/// What goes wrong at present. Changed while no processor runs.
struct Trouble {
    Place place = Place::Nowhere;
    How how = How::Nothing;

    /// True where nothing shall be given; or throws.
    bool At(Place here) const {
        if (here != place) return false;
        if (how == How::Exception) throw std::runtime_error("trouble outside");
        if (how == How::Oddity) throw 5;
        return true;
    }
};
inline Trouble trouble;

/// The troubles and the number of a host's pictures and sounds.
class HostMedia {
public:
    static inline std::atomic<int> alive = 0;
    bool fromSource = false; ///< a reader's, or a clone of it
    bool hasBuffers = true;

protected:
    HostMedia() { ++alive; }
    HostMedia(const HostMedia& other)
        : fromSource(other.fromSource)
        , hasBuffers(other.hasBuffers) {
        ++alive;
    }
    HostMedia& operator=(const HostMedia&) = default;
    ~HostMedia() { --alive; }

    bool GivesBuffers() const {
        return !trouble.At(fromSource ? Place::SourceBuffer : Place::Buffer) && hasBuffers;
    }
    template <class Media>
    Media* CloneOf(const Media& media) const {
        return trouble.At(fromSource ? Place::SourceClone : Place::Clone) ? nullptr : new Media(media);
    }
    template <class Media>
    void Delete(const Media* media) const {
        const bool ofSource = fromSource;
        delete media;
        trouble.At(ofSource ? Place::SourceFree : Place::Free);
    }
};

} // namespace test
