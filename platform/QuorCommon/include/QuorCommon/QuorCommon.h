#pragma once

/// What the host's parts have in common: paths, product modules, and the two questions to the operating
/// system.

#include <QuorCommon/QuorAuth.h>
#include <QuorCommon/QuorSystem.h>
#include <QuorCommon/quorsys.h>
