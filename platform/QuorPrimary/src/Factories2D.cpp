#include "MadePrimary.h"

#include <QuorPrimary/QuorPrimaryFactories2D.h>

// Each factory tests what is its own; `make` refuses what is not finite.

using namespace primary;

QuorPrimary2D* createQuorLine(const KxGePoint3D& start, const KxGePoint3D& end)
{
    return make<QuorPrimary2D>(__func__, start, end);
}

QuorPrimary2D* createQuorArc(const KxGePoint3D& centre, double radius, double startAngle, double endAngle,
                             const KxGeVector3D& normal)
{
    if (!isExtent(radius) || !isDirection(normal)) return nullptr;
    return make<QuorPrimary2D>(__func__, centre, radius, startAngle, endAngle, normal);
}

QuorPrimary2D* createQuorCirc(const KxGePoint3D& centre, double radius, const KxGeVector3D& normal)
{
    if (!isExtent(radius) || !isDirection(normal)) return nullptr;
    return make<QuorPrimary2D>(__func__, centre, radius, normal);
}

QuorPrimaryText* createQuorText(int justification, const KxGePoint3D& insertion, const char* text,
                                double angle)
{
    return make<QuorPrimaryText>(__func__, justification, insertion, text, angle);
}

QuorPrimaryText* createQuorText(int justification, const KxGePoint3D& insertion, const char* text,
                                const KxGeVector3D& direction)
{
    if (!isDirection(direction)) return nullptr;
    return make<QuorPrimaryText>(__func__, justification, insertion, text, direction);
}

QuorPrimary2D* createQuorPline2D(const std::vector<QuorPolyDesc>& vertices, double width)
{
    if (!isExtent(width)) return nullptr;
    return make<QuorPrimary2D>(__func__, vertices, width);
}

QuorPrimary2D* createQuorPoint(const KxGePoint3D& point, short style)
{
    return make<QuorPrimary2D>(__func__, point, int{style});
}

QuorPrimary2D* createQuorLineArr(const std::vector<KxGePoint3D>& points, bool connected)
{
    return make<QuorPrimary2D>(__func__, points, connected);
}

QuorPrimary2D* createQuorHatch(const char* pattern, const std::vector<QuorPolyDesc>& outer,
                               const std::vector<QuorPolyDesc>& inner, double angle, double scale)
{
    return make<QuorPrimary2D>(__func__, pattern, outer, inner, angle, scale);
}

QuorPrimary2D* createQuorEllipse(const KxGePoint3D& centre, const KxGeVector3D& normal,
                                 const KxGeVector3D& majorAxis, double ratio, double startAngle,
                                 double endAngle)
{
    if (!areDirections(normal, majorAxis) || !isExtent(ratio)) return nullptr;
    return make<QuorPrimary2D>(__func__, centre, normal, majorAxis, ratio, startAngle, endAngle);
}

QuorPrimary* createCadReference(const char* library, const char* block, const KxGePoint3D& insertion,
                                const KxGeVector3D& xAxis, const KxGeVector3D& yAxis)
{
    if (!areDirections(xAxis, yAxis)) return nullptr;
    return make<QuorPrimary>(__func__, library, block, insertion, xAxis, yAxis);
}
