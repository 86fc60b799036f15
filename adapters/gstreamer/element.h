#pragma once
/// What all elements have in common: a type for each effect, properties from the catalogue, and a worker.
#include <new>

#include <gst/gst.h>

#include "adapters/gstreamer/properties.h"
#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// The words for "gst-inspect-1.0", and a pad template.
void Describe(GstElementClass* of, const AVBased::EffectInfo& effect, const char* kind);
void AddPad(GstElementClass* of, const char* name, GstPadDirection direction, GstCaps* caps);

/// Registers the type and an element of it, named after the effect.
void RegisterElement(GstPlugin* plugin, const AVBased::EffectInfo& effect, GType parent,
                     const GTypeInfo& type);

/// The table of an element's type, which is an effect's own.
PropertyTable& TableOf(gpointer element);
PropertyTable& MakeTable(GType type, const AVBased::EffectInfo& effect);

/// Elements with a worker, which has a type Parent and one ParentClass, the GType of its parent in
/// ParentType(), a member settings, and SetUp(ParentClass*, const EffectInfo&), which adds what the elements
/// of its kind do.
template <typename Worker>
struct Element {
    typename Worker::Parent parent;
    Worker* worker;

    static Worker& WorkerOf(gpointer element) { return *static_cast<Element*>(element)->worker; }

    /// Throws nothing.
    static void Register(GstPlugin* plugin, const AVBased::EffectInfo& effect) {
        GTypeInfo type{};
        type.class_size = sizeof(typename Worker::ParentClass);
        type.class_init = InitClass;
        type.class_data = &effect;
        type.instance_size = sizeof(Element);
        type.instance_init = Init;
        RegisterElement(plugin, effect, Worker::ParentType(), type);
    }

private:
    static void InitClass(gpointer of, gpointer data) {
        const auto& effect = *static_cast<const AVBased::EffectInfo*>(data);
        auto* const object = static_cast<GObjectClass*>(of);
        object->set_property = SetProperty;
        object->get_property = GetProperty;
        object->finalize = Finalize;
        InstallProperties(object, MakeTable(G_TYPE_FROM_CLASS(of), effect));
        Worker::SetUp(static_cast<typename Worker::ParentClass*>(of), effect);
    }
    static void Init(GTypeInstance* instance, gpointer /*of*/) {
        reinterpret_cast<Element*>(instance)->worker =
            new Worker(TableOf(instance), reinterpret_cast<GstElement*>(instance));
    }
    static void Finalize(GObject* object) {
        delete &WorkerOf(object);
        auto* const parent = static_cast<GObjectClass*>(g_type_class_peek(Worker::ParentType()));
        parent->finalize(object);
    }
    static void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* /*spec*/) {
        WorkerOf(object).settings.Set(id, *value);
    }
    static void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* /*spec*/) {
        WorkerOf(object).settings.Get(id, *value);
    }
};

} // namespace aveffect::gst
