#pragma once
/// How effect classes become rows of the factory tables.
#include <concepts>
#include <span>
#include <string>
#include <string_view>

#include "BaseTools/guarded.h"
#include "aveffect/effect_info.h"
#include "aveffect/plugin.h"

namespace AVBased {

/// Makes a processor of that class, which takes the manager and the name that the host asked for, the
/// manager, or nothing.
template <class Proc, class Effect>
Proc* Construct(IAVManager* manager, const std::string& name) {
    if constexpr (std::constructible_from<Effect, IAVManager*, const std::string&>)
        return new Effect(manager, name);
    else if constexpr (std::constructible_from<Effect, IAVManager*>)
        return new Effect(manager);
    else
        return new Effect;
}

/// One effect that a factory can make.
template <class Proc>
struct FactoryRow {
    std::string_view name;
    Proc* (*construct)(IAVManager* manager, const std::string& name);
};

template <class Proc, class Effect>
constexpr FactoryRow<Proc> RowOf(const EffectInfo& effect) {
    return {effect.name, &Construct<Proc, Effect>};
}

/// Whether a table's rows are the catalogue's, in its order.
template <class Proc>
constexpr bool InTheOrderOf(std::span<const EffectInfo> effects, std::span<const FactoryRow<Proc>> rows) {
    if (effects.size() != rows.size()) return false;
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].name != effects[i].name) return false;
    return true;
}

/// The first row of exactly that name makes the processor; null with an error recorded when there is none.
template <class Proc>
Proc* ConstructByName(std::span<const FactoryRow<Proc>> rows, IAVManager* manager, const char* name) {
    return BaseTool::Guarded(nullptr, [&]() -> Proc* {
        if (!name) BaseTool::Raise(kBadPointer, "Bad pointer");
        const std::string wanted = name;
        for (const FactoryRow<Proc>& row : rows)
            if (row.name == wanted) return row.construct(manager, wanted);
        BaseTool::Raise(kDoesNotExist, "Effect with the name does not exist");
    });
}

} // namespace AVBased
