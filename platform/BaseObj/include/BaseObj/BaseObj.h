#pragma once

/// The database object library's value types: object ids, named parameters, data records and byte buffers.
/// They are plain values: whoever holds one owns it, and no object is written by one thread while another
/// uses it.

#include <BaseObj/KVData.h>
#include <BaseObj/KVParams.h>
#include <BaseObj/KxDbObjectId.h>
#include <BaseObj/printText.h>
#include <BaseObj/quor_binary.h>
