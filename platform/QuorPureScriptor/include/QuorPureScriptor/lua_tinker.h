#pragma once

#include <QuorPureScriptor/Export.h>
#include <QuorPureScriptor/lua_tinker_class.h>
#include <QuorPureScriptor/lua_tinker_function.h>
#include <QuorPureScriptor/lua_tinker_table.h>
#include <QuorPureScriptor/lua_tinker_value.h>
#include <cstddef>
#include <lua.hpp>

#if defined(__GNUC__)
#define QUORPURESCRIPTOR_PRINTF(formatIndex, firstArgument)                                                  \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define QUORPURESCRIPTOR_PRINTF(formatIndex, firstArgument)
#endif

/// The binding layer: values, tables, functions and classes (in the headers above), and here the running of
/// chunks and the reporting of errors. A state is used by one thread at a time; nothing else is shared
/// between states.
namespace lua_tinker {

/// Makes the layer's own things in a state: the 64-bit integer's metatable, and the script function
/// `int64(value)`, which makes one of a number without a fraction, of decimal text or of another one, and
/// gives nil for what it cannot represent. Twice is harmless.
///
/// In scripts 64-bit integers print, concatenate, compare with each other, and calculate with + - * / % and
/// unary minus, with each other or with numbers. Results wrap around at 64 bits; a quotient is cut toward
/// zero, and a remainder has the sign of the dividend. A number with a fraction or out of range, a divisor of
/// zero or an operand of another type makes the result nil. [-0, +0, m]
QUORPURESCRIPTOR_API void init(lua_State* L);

/// Runs a file of source or of precompiled code: 0 on success, else nonzero. A UTF-8 byte order mark and a
/// first line that starts with '#' are passed over. The chunk is named "@PATH". Only a regular file is
/// opened, so that nothing blocks; "cannot open PATH: REASON" and "cannot read PATH: REASON" are reported as
/// a script's error is.
///
/// A failure is reported once, through `on_error`, and never raised. The call is safe outside every protected
/// call, with exhausted memory and a full stack frame. [-0, +0, -]
QUORPURESCRIPTOR_API int dofile(lua_State* L, const char* path);

/// Runs source or precompiled code of `length` bytes: 0 on success, else nonzero, which it is for null data.
/// The bytes are taken as they are; `chunkName` appears in messages. Failures are as those of `dofile`. [-0,
/// +0, -]
QUORPURESCRIPTOR_API int dobuffer(lua_State* L, const char* data, std::size_t length,
                                  const char* chunkName = "buffer");

/// From now on `dofile` and `dobuffer` take source alone in this state, for its life: precompiled code, which
/// the interpreter does not check enough, is reported as a script's error is. [-0, +0, m]
QUORPURESCRIPTOR_API void refuse_precompiled(lua_State* L);

/// The message handler for `lua_pcall`: prints the error value and a traceback of bounded length as one
/// message and returns the error value as it is. A value that is neither a string nor a number is described
/// ("(error object is a table value)"), without asking its metamethods. Never raises, whatever memory is
/// left. [-?, +1, -]
QUORPURESCRIPTOR_API int on_error(lua_State* L);

/// Prints a message of any length: hands it to the state's global function "_ALERT", fetched past
/// metamethods, in a protected call; when there is none, when it fails, when it is running already or when
/// the state is null, the message goes to the error outlet. The format is the host's own: a
/// script's text is only ever an argument of it. Arguments are formatted as in the "C" locale, whatever the
/// host's is. Never raises and needs no free stack slot. A message too large for memory is cut. [-0, +0, -]
QUORPURESCRIPTOR_API void print_error(lua_State* L, const char* format, ...) QUORPURESCRIPTOR_PRINTF(2, 3);

/// Prints `length` bytes as they are, NULs included; otherwise as `print_error`. [-0, +0, -]
QUORPURESCRIPTOR_API void print_error_text(lua_State* L, const char* text, std::size_t length);

/// Takes a message that no script's "_ALERT" takes: bytes that are valid during the call, and what was set
/// with the outlet. Called on the thread that prints; it must throw nothing and raise no Lua error.
using error_outlet = void (*)(const char* text, std::size_t length, void* user);

/// Sets the error outlet of the process; null goes back to standard error, where a line feed follows each
/// message. The caller keeps `user` alive. To be called while no other thread prints.
QUORPURESCRIPTOR_API void set_error_outlet(error_outlet outlet, void* user);

/// How many errors the calling thread has met in the layer's protected calls and in those whose handler is
/// `on_error`; an error that a script catches is none. It only grows: a difference tells whether something
/// failed meanwhile, whatever the script does with the report.
QUORPURESCRIPTOR_API unsigned long long error_count();

} // namespace lua_tinker
