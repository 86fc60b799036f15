#pragma once
/// Values that an effect reports about its last frame. "EffectNameRotate90X" has them: where in the frame the
/// turned picture stands.

namespace AVBased {

/// The interface's name for IAVProc::GetInterface.
constexpr char EffectInterfaceNameProp[] = "EffectInterfaceNameProp";

// The rectangle of the picture in the last frame that the effect served, in pixels from the frame's top left
// corner. All 0 before any frame.
constexpr char EffectRotate90XOffX[] = "EffectRotate90XOffX"; ///< left edge
constexpr char EffectRotate90XOffY[] = "EffectRotate90XOffY"; ///< top edge
constexpr char EffectRotate90XOffW[] = "EffectRotate90XOffW"; ///< width
constexpr char EffectRotate90XOffH[] = "EffectRotate90XOffH"; ///< height

/// Reports values by name. It is a part of the processor, which it lives as long as; used by the processor's
/// thread.
class IAVBaseProperty {
public:
    /// The value of that name goes to *value. False with an error recorded when there is no such value
    /// (10021005) or an argument is null (10021003); *value stays as it was then.
    virtual bool GetProp(const char* name, int* value) = 0;

protected:
    ~IAVBaseProperty() = default;
};

} // namespace AVBased
