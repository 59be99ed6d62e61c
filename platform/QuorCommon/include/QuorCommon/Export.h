#pragma once

#include <QuorExport.h>

#if defined(QuorCommon_STATIC)
#define QUORCOMMON_API
#elif defined(QuorCommon_EXPORTS)
#define QUORCOMMON_API QUOR_EXPORT
#else
#define QUORCOMMON_API QUOR_IMPORT
#endif
