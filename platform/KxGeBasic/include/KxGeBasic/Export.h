#pragma once

#include <QuorExport.h>

#if defined(KxGeBasic_STATIC)
#define KXGEBASIC_API
#elif defined(KxGeBasic_EXPORTS)
#define KXGEBASIC_API QUOR_EXPORT
#else
#define KXGEBASIC_API QUOR_IMPORT
#endif
