#pragma once

#include <QuorExport.h>

#if defined(BaseObj_EXPORTS)
#define BASEOBJ_API QUOR_EXPORT
#else
#define BASEOBJ_API QUOR_IMPORT
#endif
