#pragma once

#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimary.h>

#include <cmath>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// What the factories are written with: the shape that every primitive has, a class of the public headers
/// with its factory's arguments, and the tests that arguments go through.
namespace primary {

using Polyline = std::vector<QuorPolyDesc>;
using Loops = std::vector<Polyline>;
using Points = std::vector<KxGePoint3D>;

inline void visit(PrimaryVisitor& visitor, double value)
{
    visitor.visitNumber(value);
}
inline void visit(PrimaryVisitor& visitor, int value)
{
    visitor.visitInteger(value);
}
inline void visit(PrimaryVisitor& visitor, bool value)
{
    visitor.visitBoolean(value);
}
inline void visit(PrimaryVisitor& visitor, const std::string& value)
{
    visitor.visitText(value);
}
inline void visit(PrimaryVisitor& visitor, const KxGePoint3D& value)
{
    visitor.visitPoint(value);
}
inline void visit(PrimaryVisitor& visitor, const KxGeVector3D& value)
{
    visitor.visitVector(value);
}
inline void visit(PrimaryVisitor& visitor, const Polyline& value)
{
    visitor.visitPolyline(value);
}
inline void visit(PrimaryVisitor& visitor, const Loops& value)
{
    visitor.visitLoops(value);
}
inline void visit(PrimaryVisitor& visitor, const Points& value)
{
    visitor.visitPoints(value);
}

inline bool isFinite(double value)
{
    return std::isfinite(value);
}
inline bool isFinite(int)
{
    return true;
}
inline bool isFinite(bool)
{
    return true;
}
inline bool isFinite(const char*)
{
    return true;
}
inline bool isFinite(const QuorPoint& value)
{
    return std::isfinite(value.x) && std::isfinite(value.y) && std::isfinite(value.z);
}
inline bool isFinite(const KxGePoint3D& value)
{
    return isFinite(value.toQuorPoint());
}
inline bool isFinite(const KxGeVector3D& value)
{
    return isFinite(value.toQuorPoint());
}
inline bool isFinite(const QuorPolyDesc& value)
{
    return std::isfinite(value.startWidth) && std::isfinite(value.endWidth) && std::isfinite(value.bulge) &&
           isFinite(value.point);
}
template<class Item>
bool isFinite(const std::vector<Item>& values)
{
    for (const Item& value : values) {
        if (!isFinite(value)) return false;
    }
    return true;
}

inline bool isSize(double value)
{
    return value > 0.0;
}
inline bool isExtent(double value)
{
    return value >= 0.0;
}
inline bool isDirection(const KxGeVector3D& value)
{
    return value != KxGeVector3D();
}
inline bool areApart(const KxGePoint3D& one, const KxGePoint3D& other)
{
    return one != other;
}

template<class... Numbers>
bool areSizes(Numbers... values)
{
    return (isSize(values) && ...);
}
template<class... Vectors>
bool areDirections(const Vectors&... values)
{
    return (isDirection(values) && ...);
}
/// Two extents of a body that keeps its volume as long as one of them is above 0.
inline bool areExtents(double one, double other)
{
    return isExtent(one) && isExtent(other) && one + other > 0.0;
}

template<class Argument>
const Argument& stored(const Argument& argument)
{
    return argument;
}
inline std::string stored(const char* text)
{
    return text ? text : "";
}

/// A primitive of class `Base` with its factory's arguments, in one block of memory.
template<class Base, class... Stored>
class Made : public Base {
public:
    template<class... Arguments>
    explicit Made(const char* factory, const Arguments&... arguments)
        : Base(factory), arguments_(stored(arguments)...)
    {
    }

    void visitArguments(PrimaryVisitor& visitor) const override
    {
        std::apply([&](const Stored&... arguments) { (visit(visitor, arguments), ...); }, arguments_);
    }

protected:
    const std::tuple<Stored...>& arguments() const { return arguments_; }

private:
    std::tuple<Stored...> arguments_;
};

template<class Argument>
using Stored = std::conditional_t<std::is_same_v<Argument, const char*>, std::string, Argument>;

/// The new primitive, or null when one of the arguments is not finite. `factory` is the factory's `__func__`.
template<class Base, class... Arguments>
Base* make(const char* factory, const Arguments&... arguments)
{
    if (!(isFinite(arguments) && ...)) return nullptr;
    return new Made<Base, Stored<Arguments>...>(factory, arguments...);
}

} // namespace primary
