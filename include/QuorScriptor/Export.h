#pragma once

#include <QuorExport.h>

#if defined(QuorScriptor_EXPORTS)
#define QUORSCRIPTOR_API QUOR_EXPORT
#else
#define QUORSCRIPTOR_API QUOR_IMPORT
#endif
