#pragma once

#include <QuorExport.h>

#if defined(QuorMsgHandle_STATIC)
#define QUORMSGHANDLE_API
#elif defined(QuorMsgHandle_EXPORTS)
#define QUORMSGHANDLE_API QUOR_EXPORT
#else
#define QUORMSGHANDLE_API QUOR_IMPORT
#endif
