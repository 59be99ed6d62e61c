#pragma once

#include <QuorExport.h>

#if defined(QuorPrimary_STATIC)
#define QUORPRIMARY_API
#elif defined(QuorPrimary_EXPORTS)
#define QUORPRIMARY_API QUOR_EXPORT
#else
#define QUORPRIMARY_API QUOR_IMPORT
#endif
