#pragma once
/// The catalogue's properties as those of elements.
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gst/gst.h>

#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// The properties of an effect's elements. Ids count from 1.
struct PropertyTable {
    const AVBased::EffectInfo& effect;
    std::vector<GParamSpec*> specs = {}; ///< by id less 1, the catalogue's own first; the class has them
};

/// Installs them all: those of the catalogue, "preset" where there are presets, and where the effect goes by
/// time "start" and "duration", with transitions "progress".
void InstallProperties(GObjectClass* of, PropertyTable& table);

/// What an element's properties are set to. Safe from any thread.
class Settings {
public:
    explicit Settings(const PropertyTable& table);
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    void Set(guint id, const GValue& value);
    void Get(guint id, GValue& value) const;

    /// "NAME[/PRESET][:property=value...]", as people write effects. What stands at its default is left to
    /// the effect and to the preset.
    std::string EffectText() const;

    /// The same for a buffer of sound, which begins and ends at these milliseconds of the effect: what the
    /// element's controller moves goes evenly from what it is now to what it is at a stream time.
    std::string SoundText(GstObject* element, GstClockTime end, int64_t beginMs, int64_t endMs) const;

    GstClockTime Start() const;
    /// Of the whole; absent where it is not set.
    std::optional<GstClockTime> Duration() const;
    /// 0 to 1.
    double Progress() const;

private:
    struct Slot {
        GValue value = G_VALUE_INIT;
        bool set = false;
    };

    const GValue& ValueOf(const char* name) const;
    template <typename ValueText>
    std::string TextWith(const ValueText& valueText) const;

    const PropertyTable& m_table;
    mutable std::mutex m_mutex;
    std::vector<Slot> m_slots;
};

} // namespace aveffect::gst
