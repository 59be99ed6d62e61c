#pragma once

#include <QuorExport.h>

#if defined(BaseObj_STATIC)
#define BASEOBJ_API
#elif defined(BaseObj_EXPORTS)
#define BASEOBJ_API QUOR_EXPORT
#else
#define BASEOBJ_API QUOR_IMPORT
#endif
