#pragma once

#include <QuorExport.h>

#if defined(QuorScriptor_STATIC)
#define QUORSCRIPTOR_API
#elif defined(QuorScriptor_EXPORTS)
#define QUORSCRIPTOR_API QUOR_EXPORT
#else
#define QUORSCRIPTOR_API QUOR_IMPORT
#endif
