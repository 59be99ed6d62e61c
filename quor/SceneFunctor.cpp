#include "SceneFunctor.h"

#include <utility>

namespace quor {
namespace {

template<class Value>
bool answer(const std::optional<Value>& known, Value& value)
{
    if (known) value = *known;
    return known.has_value();
}

template<class Numbers, class Value>
bool answer(const std::map<Numbers, Value>& known, const Numbers& numbers, Value& value)
{
    const auto found = known.find(numbers);
    if (found == known.end()) return false;
    value = found->second;
    return true;
}

} // namespace

SceneFunctor::SceneFunctor(Scene scene) : scene_(std::move(scene))
{
    if (scene_.hasObjectPointer) object_ = std::make_unique<char>();
}

bool SceneFunctor::getCurrentObjectId(KxDbObjectId& id) const
{
    if (scene_.objectId) id.setId(*scene_.objectId);
    return scene_.objectId.has_value();
}

bool SceneFunctor::getIsoPoint(int number, KxGePoint3D& point) const
{
    return answer(scene_.points, number, point);
}

bool SceneFunctor::getDefaultIsoMat(KxGeMatrix3D& matrix) const
{
    return answer(scene_.defaultMatrix, matrix);
}

bool SceneFunctor::getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const
{
    return answer(scene_.legs, {a, b}, direction);
}

bool SceneFunctor::getNormalIsoMat4(unsigned short a, unsigned short b, unsigned short c, unsigned short d,
                                    KxGeMatrix3D& matrix) const
{
    return answer(scene_.normalMatricesOfFour, {a, b, c, d}, matrix);
}

bool SceneFunctor::getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& matrix) const
{
    return answer(scene_.normalMatrices, {a, b}, matrix);
}

bool SceneFunctor::getArcIsoMat(unsigned short a, unsigned short b, unsigned short c,
                                KxGeMatrix3D& matrix) const
{
    return answer(scene_.arcMatrices, {a, b, c}, matrix);
}

bool SceneFunctor::getRefIsoMat(KxGeMatrix3D& matrix, int a, int b) const
{
    return answer(scene_.referenceMatrices, {a, b}, matrix) || answer(scene_.defaultReferenceMatrix, matrix);
}

void* SceneFunctor::getCurrentObjectPointer() const
{
    return object_.get();
}

bool SceneFunctor::getPsView(KxGeVector3D& direction) const
{
    return answer(scene_.view, direction);
}

} // namespace quor
