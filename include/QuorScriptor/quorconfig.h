#pragma once

/// A project's configuration: what the two configuration scripts answer, and how they are run.

#include <QuorScriptor/configstate.h>
#include <QuorScriptor/getters.h>
