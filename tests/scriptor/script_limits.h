#pragma once

#include "scriptor_fixture.h"

#include <QuorScriptor/ScriptLimits.h>

/// States that are made in its life have limits.
class Limited {
public:
    explicit Limited(double seconds, std::size_t bytes = 0, bool untrusted = false)
    {
        quorlua::limitNewStates({seconds, bytes, untrusted});
        static_cast<void>(quorlua::takeLimitReached());
    }
    ~Limited() { quorlua::limitNewStates({}); }
    Limited(const Limited&) = delete;
    Limited& operator=(const Limited&) = delete;
};

/// Runs a chunk as a scriptor's buffer; a later one needs a later time.
inline Quor::GlibStatus runChunk(QuorGlibScriptor& scriptor, std::string chunk, long long time = 100)
{
    return scriptor.loadBuffer(bufferOf(chunk), time, false);
}
