#include "host/output/numbered_output.h"

#include <utility>

#include "host/media/input.h"
#include "host/output/output_file.h"
#include "host/output/still_picture.h"

namespace aveffect {

void RequireOtherFiles(const OutputPlan& plan, const std::string& input) {
    if (plan.IsNumbered() && StandsFor(plan.target, input))
        throw Error(ErrorKind::Output,
                    plan.target + " would replace the input " + input + "; name another output");
}

std::string NumberedOutput::LastFile() const { return NumberedName(m_plan.target, m_pictures); }

void NumberedOutput::Write(mediabridge::AVFramePtr picture) {
    OutputPlan plan = m_plan;
    plan.target = NumberedName(plan.target, m_pictures + 1);
    OutputFile::Check(plan.target, {}, m_overwrite);
    WriteStill(plan, std::move(picture), {}, m_overwrite, m_cancel)->Publish();
    ++m_pictures;
}

} // namespace aveffect
