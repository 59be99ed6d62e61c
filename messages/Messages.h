#pragma once

#include "Gbk.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <algorithm>
#include <array>
#include <cstddef>

/// Every text that the library shows, in one place. The texts are fixed, their odd counting included; they
/// are bytes in GBK and pass through the host's translation before use.
namespace quorlua::messages {

/// A segment call failed; the segment's name.
inline constexpr GbkText segmentFailed{U"图形库调用出错：%s"};
/// A segment answered no table of primitives.
inline constexpr GbkText noPrimitives{U"图形库脚本未返回结果"};
/// A boolean record has another length than 4; its length.
inline constexpr GbkText booleanLength{U"\n布尔运算参数应该为4个，目前为: %d"};
/// A boolean record's operation is no integer.
inline constexpr GbkText booleanOperation{U"\n布尔计算第2个参数应该为布尔运算类型"};
/// A boolean record's main element is no integer.
inline constexpr GbkText booleanMain{U"\n布尔计算第3个参数应该为执行布尔运算的主体元序号"};
/// A boolean record's other element is no integer. The text counts it as the third.
inline constexpr GbkText booleanOther{U"\n布尔计算第3个参数应该为执行布尔运算的体元序号"};
/// A slice record's plane is no table.
inline constexpr GbkText slicePlane{U"\n布尔计算第3个参数应该为执行布尔切割的平面定义"};
/// A slice plane's first item is no point.
inline constexpr GbkText slicePoint{U"\n布尔切割平面定义的第1个参数应该为点"};
/// A slice plane's second item is no direction.
inline constexpr GbkText sliceDirection{U"\n布尔切割平面定义第2个参数应该为方向"};
/// An ellipse record is shorter than 7; its length.
inline constexpr GbkText ellipseLength{U"\n椭圆参数应该为7个，目前为: %d"};
/// An ellipse's centre is no point.
inline constexpr GbkText ellipseCentre{U"\n椭圆第1个参数应该为点"};
/// An ellipse's normal is no vector. The text says point.
inline constexpr GbkText ellipseNormal{U"\n椭圆第2个参数应该为点"};
/// An ellipse's major axis is no vector. The text says point.
inline constexpr GbkText ellipseMajorAxis{U"\n椭圆第3个参数应该为点"};
/// An ellipse's ratio is no number.
inline constexpr GbkText ellipseRatio{U"\n椭圆第4个参数应该为数"};
/// An ellipse's start angle is no number.
inline constexpr GbkText ellipseStart{U"\n椭圆第5个参数应该为数"};
/// An ellipse's end angle is no number.
inline constexpr GbkText ellipseEnd{U"\n椭圆第6个参数应该为数"};

/// No function of the configuration script gave a usable answer; the function's name and the module.
inline constexpr GbkText configuration{U"系统配置出错，请联系开发商，%s: %s"};

/// The name of a configuration script's function as a template argument.
template<std::size_t length>
struct FunctionName {
    std::array<char, length> text{};

    consteval FunctionName(const char (&name)[length]) { std::copy_n(name, length, text.begin()); }
};

namespace detail {

template<std::size_t begin, std::size_t name, std::size_t end>
consteval auto joined(const char32_t (&first)[begin], const FunctionName<name>& function,
                      const char32_t (&last)[end])
{
    char32_t text[begin + name + end - 2] = {};
    char32_t* at = std::copy_n(first, begin - 1, text);
    at = std::copy_n(function.text.begin(), name - 1, at);
    std::copy_n(last, end, at);
    return GbkText(text);
}

} // namespace detail

/// The same with the function's name written in; the module.
template<FunctionName function>
inline constexpr auto configurationOf = detail::joined(U"系统配置出错，请联系开发商，", function, U": %s");
/// The user database's place is asked for without a module.
inline constexpr GbkText configurationOfUser{U"系统配置出错，请联系开发商，getProjectUser"};

/// A message in the host's translation. Valid as long as that function says.
template<std::size_t length>
const char* translated(const GbkText<length>& message)
{
    return quorGetText_callbk(message.text());
}

} // namespace quorlua::messages
