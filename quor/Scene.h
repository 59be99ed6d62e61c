#pragma once

#include <KxGeBasic/KxGeMatrix3D.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <array>
#include <map>
#include <optional>
#include <string>

namespace quor {

/// Numbers by which a script asks, as the host receives them: narrowed, and in the host's order.
template<std::size_t count>
using HostNumbers = std::array<unsigned short, count>;

/// How texts of one style are drawn.
struct SceneStyle {
    std::string place; ///< of the style in its file, for messages
    std::string font;  ///< path of the font's file
    long face = 0;     ///< of a file that holds several, which one
    double height = 0; ///< of a capital letter, in drawing units; above 0
    double factor = 1; ///< of the width; above 0
};

/// What a host would know about a drawing in work. What is not set, and what a map does not hold, the host
/// does not know.
struct Scene {
    std::string path;

    std::optional<long long> objectId;
    bool hasObjectPointer = false;
    std::optional<KxGeVector3D> view;

    std::optional<KxGeMatrix3D> defaultMatrix;
    std::map<HostNumbers<2>, KxGeMatrix3D> normalMatrices;
    std::map<HostNumbers<4>, KxGeMatrix3D> normalMatricesOfFour;
    std::map<HostNumbers<3>, KxGeMatrix3D> arcMatrices;
    std::map<std::array<int, 2>, KxGeMatrix3D> referenceMatrices;
    /// Of all numbers that `referenceMatrices` does not hold.
    std::optional<KxGeMatrix3D> defaultReferenceMatrix;

    std::map<int, KxGePoint3D> points;
    std::map<HostNumbers<2>, KxGeVector3D> legs;

    /// The style that texts have first, one of `textStyles`; empty when there are none. Names are in GBK.
    std::string textStyle;
    std::map<std::string, SceneStyle> textStyles;
};

} // namespace quor
