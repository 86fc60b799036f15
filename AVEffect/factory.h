#pragma once
/// How effect classes become rows of the factory tables. The catalogue names the class; the class's source
/// unit says how it is made with one of the two macros below; a row without that does not link.
#include <span>
#include <string>
#include <string_view>

#include "BaseTools/guarded.h"
#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"

namespace AVBased {

/// Makes a processor of that class. The name is the one the host asked for.
template <class Effect>
IVideoProc* ConstructVideo(IAVManager* manager, const std::string& name);
template <class Effect>
IAudioProc* ConstructAudio(IAVManager* manager, const std::string& name);

/// One effect that a factory can make.
template <class Proc>
struct FactoryRow {
    std::string_view name;
    Proc* (*construct)(IAVManager* manager, const std::string& name);
};

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

/// In namespace AVBased, in the class's source unit: the class is constructed without arguments.
#define AVEFFECT_CONSTRUCT_VIDEO(Class)                                                                      \
    template <>                                                                                              \
    IVideoProc* ConstructVideo<Class>(IAVManager*, const std::string&) {                                     \
        return new Class;                                                                                    \
    }
/// The same for a class that takes the manager and the name.
#define AVEFFECT_CONSTRUCT_TRANSITION(Class)                                                                 \
    template <>                                                                                              \
    IVideoProc* ConstructVideo<Class>(IAVManager * manager, const std::string& name) {                       \
        return new Class(manager, name);                                                                     \
    }
#define AVEFFECT_CONSTRUCT_AUDIO(Class)                                                                      \
    template <>                                                                                              \
    IAudioProc* ConstructAudio<Class>(IAVManager*, const std::string&) {                                     \
        return new Class;                                                                                    \
    }
