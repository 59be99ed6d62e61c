#pragma once

#include <QuorExport.h>

#if defined(QuorPureScriptor_STATIC)
#define QUORPURESCRIPTOR_API
#elif defined(QuorPureScriptor_EXPORTS)
#define QUORPURESCRIPTOR_API QUOR_EXPORT
#else
#define QUORPURESCRIPTOR_API QUOR_IMPORT
#endif
