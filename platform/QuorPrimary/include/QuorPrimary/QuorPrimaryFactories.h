#pragma once

/// All factories of primitives. What they have in common:
///
/// - The result is a new object that the caller owns and deletes, without any attribute set. Its class is the
///   most useful one that the kind allows.
/// - The result is null when an argument breaks the rule that its comment gives it, and for no other reason.
///   A factory throws `std::bad_alloc` when memory is exhausted, and nothing else.
/// - Arguments are copied. A null text counts as an empty one.
/// - Any thread may call.
///
/// The words that the comments use for arguments, each with the rule that goes with it:
///
/// - place: a point. Null unless its coordinates are finite. Places that are said to be apart must not be
///   equal in all three coordinates, since the solid between them would vanish.
/// - direction: a vector whose length plays no part. Null unless its components are finite and one of them is
///   not 0.
/// - size: a length in drawing units without which nothing is left. Null unless it is finite and above 0.
/// - extent: a length in drawing units. Null unless it is finite and not negative; 0 is kept unless the
///   comment says in which company it is not.
/// - angle: degrees, counted from the first direction named to the second, or anti-clockwise for whoever
///   looks against the axis. Null unless it is finite.
/// - polyline: vertices. Null unless all numbers of all vertices are finite. Nothing else about the vertices
///   is tested.
/// - integer, boolean, text: always kept.

#include <QuorPrimary/QuorOprPrimary.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorPrimary/QuorPrimaryFactories2D.h>
#include <QuorPrimary/QuorPrimaryFactories3D.h>
