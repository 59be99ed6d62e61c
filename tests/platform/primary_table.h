#pragma once

#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimaryFactories.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

/// The table that the factories are tested by: a row per factory, and in it, for each argument, a good value,
/// others that are kept and others that are refused. Calls are derived from a row by putting one of those
/// values into the good call.
namespace table {

using Polyline = std::vector<QuorPolyDesc>;
using Loops = std::vector<Polyline>;
using Points = std::vector<KxGePoint3D>;
using Params = std::vector<KVParams>;

/// A visited value. Its index tells which function of the visitor received it.
using Value =
    std::variant<double, int, bool, std::string, KxGePoint3D, KxGeVector3D, Polyline, Loops, Points, Params>;

inline Value toValue(double value)
{
    return value;
}
inline Value toValue(int value)
{
    return value;
}
inline Value toValue(short value)
{
    return int{value};
}
inline Value toValue(bool value)
{
    return value;
}
inline Value toValue(const char* value)
{
    return std::string(value ? value : "");
}
inline Value toValue(const KxGePoint3D& value)
{
    return value;
}
inline Value toValue(const KxGeVector3D& value)
{
    return value;
}
inline Value toValue(const Polyline& value)
{
    return value;
}
inline Value toValue(const Loops& value)
{
    return value;
}
inline Value toValue(const Points& value)
{
    return value;
}

/// Keeps what it is shown, attributes with their names. A null is an empty optional.
class Recorder final : public PrimaryAttributeVisitor {
public:
    struct Attribute {
        std::string name;
        std::optional<Value> value;
        friend bool operator==(const Attribute&, const Attribute&) = default;
    };

    std::vector<Value> values;
    std::vector<Attribute> attributes;

    void visitNumber(double value) override { keep(value); }
    void visitInteger(int value) override { keep(value); }
    void visitBoolean(bool value) override { keep(value); }
    void visitText(const std::string& value) override { keep(value); }
    void visitPoint(const KxGePoint3D& value) override { keep(value); }
    void visitVector(const KxGeVector3D& value) override { keep(value); }
    void visitPolyline(const Polyline& value) override { keep(value); }
    void visitLoops(const Loops& value) override { keep(value); }
    void visitPoints(const Points& value) override { keep(value); }
    void visitParameters(const Params& value) override { keep(value); }
    void visitName(const char* name) override { name_ = name; }
    void visitNull() override { attributes.push_back({std::exchange(name_, ""), std::nullopt}); }

private:
    void keep(Value value)
    {
        if (name_.empty()) {
            values.push_back(std::move(value));
        } else {
            attributes.push_back({std::exchange(name_, ""), std::move(value)});
        }
    }

    std::string name_;
};

inline std::vector<Value> argumentsOf(const QuorPrimary& primary)
{
    Recorder recorder;
    primary.visitArguments(recorder);
    return recorder.values;
}

inline std::vector<Recorder::Attribute> attributesOf(const QuorPrimary& primary)
{
    Recorder recorder;
    primary.visitAttributes(recorder);
    return recorder.attributes;
}

inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();
inline constexpr double smallest = std::numeric_limits<double>::denorm_min();
inline constexpr double largest = std::numeric_limits<double>::max();

template<class T>
struct Argument {
    T good;
    std::vector<T> kept;
    std::vector<T> refused;
};

/// Values with each component of a triple made not finite in turn.
template<class Triple>
std::vector<Triple> notFinite()
{
    std::vector<Triple> values;
    for (const double bad : {notANumber, infinity, -infinity}) {
        values.push_back(Triple(bad, 1, 2));
        values.push_back(Triple(1, bad, 2));
        values.push_back(Triple(1, 2, bad));
    }
    return values;
}

inline Argument<KxGePoint3D> place(double x, double y, double z)
{
    return {{x, y, z},
            {{-7, -8, -9}, {0.1, 1e300, -1e-300}, {-largest, largest, smallest}},
            notFinite<KxGePoint3D>()};
}

/// A place that must not be where `other` is, but may come as near as can be.
inline Argument<KxGePoint3D> placeApartFrom(const Argument<KxGePoint3D>& other, double x, double y, double z)
{
    auto argument = place(x, y, z);
    const QuorPoint& taken = other.good.toQuorPoint();
    argument.kept.push_back({taken.x, taken.y, std::nextafter(taken.z, infinity)});
    argument.refused.push_back(other.good);
    return argument;
}

inline Argument<KxGeVector3D> direction(double x, double y, double z)
{
    Argument<KxGeVector3D> argument{{x, y, z}, {}, notFinite<KxGeVector3D>()};
    argument.kept = {{-1, 0, 0}, {0, smallest, 0}, {0, 0, -largest}, {3, -4, 5}};
    argument.refused.push_back({0, 0, 0});
    argument.refused.push_back({-0.0, 0, -0.0});
    return argument;
}

inline Argument<double> number(double good)
{
    return {good, {0.0, -0.0, 0.1, -360.5, 1e300, -largest}, {notANumber, infinity, -infinity}};
}

inline Argument<double> numberNotZero(double good)
{
    return {good,
            {smallest, -smallest, 0.1, -360.5, 1e300, -largest},
            {0.0, -0.0, notANumber, infinity, -infinity}};
}

inline Argument<double> extent(double good)
{
    return {good,
            {0.0, -0.0, smallest, 0.1, 1e300, largest},
            {-smallest, -1.0, -largest, notANumber, infinity, -infinity}};
}

inline Argument<double> size(double good)
{
    return {good,
            {smallest, 0.1, 1e300, largest},
            {0.0, -0.0, -smallest, -1.0, -largest, notANumber, infinity, -infinity}};
}

inline Argument<int> integer(int good)
{
    return {good, {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}, {}};
}

inline Argument<int> count(int good)
{
    return {good, {1, 2, std::numeric_limits<int>::max()}, {0, -1, std::numeric_limits<int>::min()}};
}

inline Argument<short> shortInteger(short good)
{
    return {good, {0, -1, std::numeric_limits<short>::min(), std::numeric_limits<short>::max()}, {}};
}

inline Argument<bool> boolean(bool good)
{
    return {good, {!good}, {}};
}

inline Argument<const char*> text(const char* good)
{
    return {good,
            {nullptr, "", "\xB7\xA7\xC3\xC5", "100%s", "a text too long to be kept within a string object"},
            {}};
}

inline Polyline polylineOf(int kind)
{
    return {{kind, 10, 20, 0.1, {1, 2, 3}}, {1, -1, 0, -0.5, {4, 5, 6}}};
}

inline std::vector<Polyline> notFinitePolylines()
{
    std::vector<Polyline> lines;
    for (const double bad : {notANumber, infinity, -infinity}) {
        lines.push_back({{}, {0, bad, 0, 0, {}}});
        lines.push_back({{}, {0, 0, bad, 0, {}}});
        lines.push_back({{}, {0, 0, 0, bad, {}}});
    }
    for (const auto& point : notFinite<KxGePoint3D>())
        lines.push_back({{}, {0, 0, 0, 0, point}});
    return lines;
}

inline Argument<Polyline> polyline(int kind)
{
    return {polylineOf(kind), {{}, {{}}, {{}, {}}, {{-3, 0, 0, 1e300, {0.1, 0, 0}}}}, notFinitePolylines()};
}

/// A polyline that a solid stands on: without a vertex nothing is left.
inline Argument<Polyline> area(int kind)
{
    auto argument = polyline(kind);
    std::erase(argument.kept, Polyline());
    argument.refused.push_back({});
    return argument;
}

inline Argument<Loops> loops()
{
    Argument<Loops> argument{{polylineOf(5), polylineOf(6)}, {{}, {{}}, {{}, polylineOf(7)}}, {}};
    for (const auto& line : notFinitePolylines())
        argument.refused.push_back({polylineOf(5), line});
    return argument;
}

inline Argument<Points> points()
{
    Argument<Points> argument{{{1, 2, 3}, {4, 5, 6}}, {{}, {{}}, {{}, {}}, {{0.1, 1e300, -1}}}, {}};
    for (const auto& point : notFinite<KxGePoint3D>())
        argument.refused.push_back({{1, 2, 3}, point});
    return argument;
}

/// A call of a factory, and what it was given in the form that a visitor sees.
struct Call {
    std::function<std::unique_ptr<QuorPrimary>()> create;
    std::vector<Value> arguments;
    std::string what;
};

struct Row {
    std::string factory;
    std::string label; ///< the factory's name, with a suffix where two forms share it
    PrimaryKind kind;
    Call good;
    std::vector<Call> kept;
    std::vector<Call> refused;
};

inline void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.label;
}

template<class Class>
constexpr PrimaryKind kindOf()
{
    if constexpr (std::is_same_v<Class, QuorPrimary3D>) return PrimaryKind::Solid;
    if constexpr (std::is_same_v<Class, QuorPrimary2D>) return PrimaryKind::Drawing;
    if constexpr (std::is_same_v<Class, QuorPrimaryText>) return PrimaryKind::Text;
    if constexpr (std::is_same_v<Class, QuorOprPrimary>) return PrimaryKind::Operation;
    return PrimaryKind::Plain;
}

template<class Class, class... Parameters>
Call callOf(Class* (*create)(Parameters...), const std::tuple<std::decay_t<Parameters>...>& values,
            std::string what)
{
    Call call;
    call.what = std::move(what);
    call.create = [create, values] { return std::unique_ptr<QuorPrimary>(std::apply(create, values)); };
    std::apply([&](const auto&... value) { (call.arguments.push_back(toValue(value)), ...); }, values);
    return call;
}

/// A row for a factory that returns a `Class` by static type.
template<class Class, class... Parameters>
Row row(const std::string& label, Class* (*create)(Parameters...),
        Argument<std::decay_t<Parameters>>... arguments)
{
    using Values = std::tuple<std::decay_t<Parameters>...>;
    const auto all = std::make_tuple(arguments...);
    const Values good(arguments.good...);
    Row made{label.substr(0, label.find('-')), label, kindOf<Class>(), callOf(create, good, "good"), {}, {}};

    const auto vary = [&]<std::size_t index>(std::integral_constant<std::size_t, index>) {
        const auto add = [&](std::vector<Call>& calls, const auto& values, const char* what) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                Values changed = good;
                std::get<index>(changed) = values[i];
                calls.push_back(callOf(create, changed,
                                       "argument " + std::to_string(index + 1) + ", " + what + " value " +
                                           std::to_string(i + 1)));
            }
        };
        add(made.kept, std::get<index>(all).kept, "kept");
        add(made.refused, std::get<index>(all).refused, "refused");
    };
    [&]<std::size_t... index>(std::index_sequence<index...>)
    {
        (vary(std::integral_constant<std::size_t, index>()), ...);
    }
    (std::index_sequence_for<Parameters...>());
    return made;
}

} // namespace table
