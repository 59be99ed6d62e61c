#include "Answer.h"

namespace quorconfig {
namespace {

constinit thread_local AnswerOrigin lastOrigin = AnswerOrigin::None;

} // namespace

const char* from(AnswerOrigin origin, const char* result)
{
    lastOrigin = result ? origin : AnswerOrigin::None;
    return result;
}

bool from(AnswerOrigin origin, bool result)
{
    lastOrigin = origin;
    return result;
}

AnswerOrigin lastAnswerOrigin()
{
    return lastOrigin;
}

} // namespace quorconfig
