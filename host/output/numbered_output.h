#pragma once
/// Pictures in files of their own.
#include <atomic>
#include <string>

#include "host/output/output_plan.h"
#include "host/support/error.h"

namespace aveffect {

/// The warning where a film has sound.
inline constexpr char kNoSoundBeside[] = "pictures in files of their own have no sound; it is left out";

/// Throws Error (Output) when an input is among the numbered files of the output.
void RequireOtherFiles(const OutputPlan& plan, const std::string& input);

/// Writes each picture to a file, numbered from 1. Each appears when it is whole, and those that have stay,
/// whatever happens then. Used by one thread at a time.
class NumberedOutput {
public:
    /// Plan and flag outlive it.
    NumberedOutput(const OutputPlan& plan, bool overwrite, const std::atomic<bool>& cancel)
        : m_plan(plan)
        , m_overwrite(overwrite)
        , m_cancel(cancel) {}

    /// Of a picture as the encoder takes it. Throws Error (Output, Interrupted).
    void Write(mediabridge::AVFramePtr picture);

    /// How many have been written.
    int Pictures() const noexcept { return m_pictures; }

    /// Does work that writes; when it is interrupted, the error names the last file.
    template <typename Work>
    void Run(Work work) const {
        try {
            work();
        } catch (const Error& error) {
            if (error.Kind() != ErrorKind::Interrupted || m_pictures == 0) throw;
            throw Error(error.Kind(), "interrupted; " + LastFile() + " is the last picture that was written");
        }
    }

private:
    std::string LastFile() const;

    const OutputPlan& m_plan;
    const bool m_overwrite;
    const std::atomic<bool>& m_cancel;
    int m_pictures = 0;
};

} // namespace aveffect
