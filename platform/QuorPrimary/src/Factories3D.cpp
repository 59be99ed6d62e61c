#include "MadePrimary.h"

#include <QuorPrimary/QuorPrimaryFactories3D.h>

// Each factory tests what is its own; `make` refuses what is not finite.

using namespace primary;

QuorPrimary3D* createQuorGraphy3DCylinder(const KxGePoint3D& start, const KxGePoint3D& end, double radius,
                                          int facets, bool hidden)
{
    if (!areApart(start, end) || !isSize(radius)) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, radius, facets, hidden);
}

QuorPrimary3D* createQuorGraphy3DBox(double xLength, double yLength, double zLength,
                                     const KxGePoint3D& centre, const KxGeVector3D& xAxis,
                                     const KxGeVector3D& yAxis, bool hidden, int level)
{
    if (!areSizes(xLength, yLength, zLength) || !areDirections(xAxis, yAxis)) return nullptr;
    return make<QuorPrimary3D>(__func__, xLength, yLength, zLength, centre, xAxis, yAxis, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DBox1(double xLength, double yLength, double zLength,
                                      const KxGePoint3D& corner, const KxGeVector3D& xAxis,
                                      const KxGeVector3D& yAxis, bool hidden, int level)
{
    if (!areSizes(xLength, yLength, zLength) || !areDirections(xAxis, yAxis)) return nullptr;
    return make<QuorPrimary3D>(__func__, xLength, yLength, zLength, corner, xAxis, yAxis, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DTorus(double ringRadius, double tubeRadius, const KxGePoint3D& centre,
                                       const KxGePoint3D& start, const KxGePoint3D& end, int side,
                                       int facetsAround, int facetsAcross, bool hidden, int level)
{
    if (!isExtent(ringRadius) || !isSize(tubeRadius)) return nullptr;
    if (!areApart(start, centre) || !areApart(end, centre)) return nullptr;
    return make<QuorPrimary3D>(__func__, ringRadius, tubeRadius, centre, start, end, side, facetsAround,
                               facetsAcross, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DTorus1(double ringRadius, double tubeRadius, const KxGePoint3D& centre,
                                        const KxGePoint3D& start, const KxGePoint3D& towards, double angle,
                                        int facetsAround, int facetsAcross, bool hidden, int level)
{
    if (!isExtent(ringRadius) || !isSize(tubeRadius) || angle == 0.0) return nullptr;
    if (!areApart(start, centre) || !areApart(towards, centre)) return nullptr;
    return make<QuorPrimary3D>(__func__, ringRadius, tubeRadius, centre, start, towards, angle, facetsAround,
                               facetsAcross, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DEcone(const KxGePoint3D& start, const KxGePoint3D& end, double startRadius,
                                       double endRadius, const KxGeVector3D& normal, int facets, bool hidden)
{
    if (!areApart(start, end) || !areExtents(startRadius, endRadius) || !isDirection(normal)) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, startRadius, endRadius, normal, facets, hidden);
}

QuorPrimary3D* createQuorGraphy3DScylinder(const KxGePoint3D& start, const KxGePoint3D& end, double radius,
                                           const KxGeVector3D& endNormal, int facets, bool hidden)
{
    if (!areApart(start, end) || !isSize(radius) || !isDirection(endNormal)) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, radius, endNormal, facets, hidden);
}

QuorPrimary3D* createQuorGraphy3DOval(double levelRadius, double steepRadius, double axisRadius,
                                      const KxGePoint3D& centre, const KxGeVector3D& axis, int facetsAround,
                                      int facetsAcross, bool hidden)
{
    if (!areSizes(levelRadius, steepRadius, axisRadius) || !isDirection(axis)) return nullptr;
    return make<QuorPrimary3D>(__func__, levelRadius, steepRadius, axisRadius, centre, axis, facetsAround,
                               facetsAcross, hidden);
}

QuorPrimary3D* createQuorGraphy3DPrism(const KxGePoint3D& start, const KxGePoint3D& end,
                                       const KxGePoint3D& corner, int sides, bool hidden)
{
    if (!areApart(start, end) || !areApart(start, corner) || sides <= 0) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, corner, sides, hidden);
}

QuorPrimary3D* createQuorGraphy3DPrism1(const KxGePoint3D& start, const KxGePoint3D& end,
                                        const KxGePoint3D& middle, int sides, bool hidden)
{
    if (!areApart(start, end) || !areApart(start, middle) || sides <= 0) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, middle, sides, hidden);
}

QuorPrimary3D* createQuorGraphy3DSaddle(double length, double width, double height, const KxGePoint3D& base,
                                        double pipeRadius, double bedAngle, int facets,
                                        const KxGeVector3D& along, const KxGeVector3D& across, bool hidden,
                                        int level)
{
    if (!areSizes(length, width, height) || !isExtent(pipeRadius) || !areDirections(along, across))
        return nullptr;
    return make<QuorPrimary3D>(__func__, length, width, height, base, pipeRadius, bedAngle, facets, along,
                               across, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DSphere(const KxGePoint3D& centre, double radius, int facets, bool hidden)
{
    if (!isSize(radius)) return nullptr;
    return make<QuorPrimary3D>(__func__, centre, radius, facets, hidden);
}

QuorPrimary3D* createQuorGraphy3DSqucir(const KxGePoint3D& squareCentre, const KxGeVector3D& xAxis,
                                        double width, double depth, const KxGePoint3D& circleCentre,
                                        const KxGeVector3D& circleNormal, double radius, int facets,
                                        bool hidden, int level)
{
    if (!areApart(squareCentre, circleCentre) || !areDirections(xAxis, circleNormal)) return nullptr;
    if (!areExtents(width, radius) || !areExtents(depth, radius)) return nullptr;
    return make<QuorPrimary3D>(__func__, squareCentre, xAxis, width, depth, circleCentre, circleNormal,
                               radius, facets, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DSqucir_1(const KxGePoint3D& squareCentre, const KxGeVector3D& xAxis,
                                          const KxGeVector3D& yAxis, double width, double depth,
                                          const KxGePoint3D& circleCentre, const KxGeVector3D& circleNormal,
                                          double radius, int facets, bool hidden, int level)
{
    if (!areApart(squareCentre, circleCentre) || !areDirections(xAxis, yAxis, circleNormal)) return nullptr;
    if (!areExtents(width, radius) || !areExtents(depth, radius)) return nullptr;
    return make<QuorPrimary3D>(__func__, squareCentre, xAxis, yAxis, width, depth, circleCentre, circleNormal,
                               radius, facets, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DSqucone(double bottomX, double bottomY, double topX, double topY,
                                         double height, const KxGePoint3D& base, const KxGeVector3D& xAxis,
                                         const KxGeVector3D& yAxis, const KxGeVector3D& lean, double twist,
                                         bool hidden)
{
    if (!areExtents(bottomX, topX) || !areExtents(bottomY, topY) || !isSize(height)) return nullptr;
    if (!areDirections(xAxis, yAxis, lean)) return nullptr;
    return make<QuorPrimary3D>(__func__, bottomX, bottomY, topX, topY, height, base, xAxis, yAxis, lean,
                               twist, hidden);
}

QuorPrimary3D* createQuorGraphy3DSqutorus(double startWidth, double startHeight, double endWidth,
                                          double endHeight, const KxGePoint3D& centre,
                                          const KxGePoint3D& start, const KxGePoint3D& end, int side,
                                          int facets, bool hidden, int level)
{
    if (!areExtents(startWidth, endWidth) || !areExtents(startHeight, endHeight)) return nullptr;
    if (!areApart(start, centre) || !areApart(end, centre)) return nullptr;
    return make<QuorPrimary3D>(__func__, startWidth, startHeight, endWidth, endHeight, centre, start, end,
                               side, facets, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DSqutorus1(double startWidth, double startHeight, double endWidth,
                                           double endHeight, const KxGePoint3D& centre,
                                           const KxGePoint3D& start, const KxGeVector3D& axis, double angle,
                                           int facets, bool hidden, int level)
{
    if (!areExtents(startWidth, endWidth) || !areExtents(startHeight, endHeight)) return nullptr;
    if (!areApart(start, centre) || !isDirection(axis) || angle == 0.0) return nullptr;
    return make<QuorPrimary3D>(__func__, startWidth, startHeight, endWidth, endHeight, centre, start, axis,
                               angle, facets, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DWedge(const KxGePoint3D& first, const KxGePoint3D& second,
                                       const KxGePoint3D& third, double height, bool hidden, int level)
{
    if (!areApart(first, second) || !areApart(second, third) || !areApart(third, first)) return nullptr;
    if (!isSize(height)) return nullptr;
    return make<QuorPrimary3D>(__func__, first, second, third, height, hidden, level);
}

QuorPrimary3D* createQuorGraphy3DConcone(const KxGePoint3D& start, const KxGePoint3D& end, double startRadius,
                                         double endRadius, int facets, bool hidden)
{
    if (!areApart(start, end) || !areExtents(startRadius, endRadius)) return nullptr;
    return make<QuorPrimary3D>(__func__, start, end, startRadius, endRadius, facets, hidden);
}

QuorPrimary3D* createQuorGraphy3DPolygon(const KxGePoint3D& origin, const KxGeVector3D& xAxis,
                                         const KxGeVector3D& yAxis, const KxGeVector3D& extrusion,
                                         double height, const std::vector<QuorPolyDesc>& outer,
                                         const std::vector<std::vector<QuorPolyDesc>>& inner, int facets,
                                         bool hidden, int level)
{
    if (!areDirections(xAxis, yAxis, extrusion) || !isSize(height) || outer.empty()) return nullptr;
    return make<QuorPrimary3D>(__func__, origin, xAxis, yAxis, extrusion, height, outer, inner, facets,
                               hidden, level);
}

QuorPrimary3D* createQuorGraphy3DPline(const std::vector<QuorPolyDesc>& vertices)
{
    return make<QuorPrimary3D>(__func__, vertices);
}

QuorPrimary3D* createQuorGraphy3DRevolve(const KxGePoint3D& axisPoint, const KxGeVector3D& axis,
                                         const std::vector<QuorPolyDesc>& profile, double angle, int facets,
                                         bool hidden, int level)
{
    if (!isDirection(axis) || profile.empty() || angle == 0.0) return nullptr;
    return make<QuorPrimary3D>(__func__, axisPoint, axis, profile, angle, facets, hidden, level);
}
