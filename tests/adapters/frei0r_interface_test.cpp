// Our declaration of the interface beside the packaged one.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "adapters/frei0r/frei0r_interface.h"

namespace {

constexpr int kOurs[] = {F0R_PLUGIN_TYPE_FILTER,   F0R_PLUGIN_TYPE_MIXER2, F0R_COLOR_MODEL_BGRA8888,
                         F0R_COLOR_MODEL_PACKED32, FREI0R_MAJOR_VERSION,   F0R_PARAM_BOOL,
                         F0R_PARAM_DOUBLE,         F0R_PARAM_COLOR,        F0R_PARAM_STRING};

} // namespace

namespace packaged {
#include <frei0r.h>
} // namespace packaged

namespace {

// The same number and types of arguments, pointers to records counted as pointers.
template <class Function>
struct Shape;
template <class Result, class... Arguments>
struct Shape<Result(Arguments...)> {
    template <class T>
    static constexpr size_t Code = std::is_pointer_v<T>          ? 100
                                   : std::is_void_v<T>           ? 1
                                   : std::is_floating_point_v<T> ? 2
                                                                 : 3;
    static std::vector<size_t> Codes() { return {Code<Result>, Code<Arguments>...}; }
};

#define EXPECT_SAME_SHAPE(name)                                                                              \
    EXPECT_EQ(Shape<decltype(::name)>::Codes(), Shape<decltype(packaged::name)>::Codes()) << #name
#define EXPECT_SAME_PLACE(record, member)                                                                    \
    EXPECT_EQ(offsetof(::record, member), offsetof(packaged::record, member)) << #record "." #member

TEST(Frei0r, InterfaceIsThePackagedOne) {
    constexpr int packagedOnes[] = {
        F0R_PLUGIN_TYPE_FILTER,   F0R_PLUGIN_TYPE_MIXER2, F0R_COLOR_MODEL_BGRA8888,
        F0R_COLOR_MODEL_PACKED32, FREI0R_MAJOR_VERSION,   F0R_PARAM_BOOL,
        F0R_PARAM_DOUBLE,         F0R_PARAM_COLOR,        F0R_PARAM_STRING};
    for (size_t i = 0; i < std::size(kOurs); ++i) EXPECT_EQ(kOurs[i], packagedOnes[i]) << i;
    EXPECT_EQ(sizeof(::f0r_plugin_info_t), sizeof(packaged::f0r_plugin_info_t));
    EXPECT_EQ(sizeof(::f0r_param_info_t), sizeof(packaged::f0r_param_info_t));
    EXPECT_EQ(sizeof(::f0r_param_color_t), sizeof(packaged::f0r_param_color_t));
    EXPECT_SAME_PLACE(f0r_plugin_info_t, author);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, plugin_type);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, color_model);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, frei0r_version);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, major_version);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, minor_version);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, num_params);
    EXPECT_SAME_PLACE(f0r_plugin_info_t, explanation);
    EXPECT_SAME_PLACE(f0r_param_info_t, type);
    EXPECT_SAME_PLACE(f0r_param_info_t, explanation);
    EXPECT_SAME_PLACE(f0r_param_color_t, g);
    EXPECT_SAME_PLACE(f0r_param_color_t, b);
    EXPECT_SAME_SHAPE(f0r_init);
    EXPECT_SAME_SHAPE(f0r_deinit);
    EXPECT_SAME_SHAPE(f0r_get_plugin_info);
    EXPECT_SAME_SHAPE(f0r_get_param_info);
    EXPECT_SAME_SHAPE(f0r_construct);
    EXPECT_SAME_SHAPE(f0r_destruct);
    EXPECT_SAME_SHAPE(f0r_set_param_value);
    EXPECT_SAME_SHAPE(f0r_get_param_value);
    EXPECT_SAME_SHAPE(f0r_update);
    EXPECT_SAME_SHAPE(f0r_update2);
}

} // namespace
