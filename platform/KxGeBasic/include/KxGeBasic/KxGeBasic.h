#pragma once

/// The geometry library's value types. They are plain values: copied freely, owned by whoever holds them,
/// safe to use from any thread as long as one object is not written by one thread while another uses it.
/// Lengths are in the drawing's unit. Comparing is exact.

#include <KxGeBasic/KxGeMatrix3D.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <KxGeBasic/KxGePrint.h>
#include <KxGeBasic/QuorPolyDesc.h>
#include <KxGeBasic/paramt.h>
