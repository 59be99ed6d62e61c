#pragma once

#include <QuorMsgHandle/Export.h>
#include <QuorMsgHandle/MsgArg.h>

#include <cstddef>
#include <string>

/// Gives the translation of a message text, in the host's code page, or `text` itself where there is none.
/// The result is owned by the function and stays valid at least until its next call on the same thread. It
/// throws nothing.
using QuorTextTranslator = const char* (*)(const char* text);

/// Translates a message before it is formatted or shown. Without a function, or where the function gives
/// null, the result is `text` itself; a null text gives "". Never null. Any thread; the function must bear
/// that itself.
QUORMSGHANDLE_API const char* quorGetText_callbk(const char* text);

/// Sets the translation function of the process; null goes back to none. Any thread.
QUORMSGHANDLE_API void setQuorGetText_callbk(QuorTextTranslator translate);

/// Messages and their formats.
///
/// Without arguments a text stands as it is, every '%' included: a script's "100%s" is shown as "100%s".
///
/// With arguments, each conversion of the C library's `printf` takes the next argument, whatever type that
/// has:
///     d i u     the integer; a double without a fraction as an integer
///     o x X     the same in octal and hexadecimal; below zero as two's complement of the argument's own type
///     f F e E g G a A   the number
///     c         the byte; an integer from 0 to 255 is one
///     s         the text, cut after as many bytes as the precision says
///     p         the address, or an integer, as 0x and hexadecimal digits
/// An argument that the letter does not suit is shown in its plain form: a text as it stands, an integer in
/// decimal, a double in the shortest form that reads back as the same number, a boolean as true or false (1
/// or 0 where a number is asked for), an address as 0x..., null as (null). No argument is ever read as a
/// format.
///
/// Flags '-', '+', ' ', '0' and, for integers, '#' act as in C; ''' and, for doubles, '#' are accepted and do
/// nothing. '*' takes an argument as width or precision. Widths, and precisions of numbers, above 4096 count
/// as 4096. Length modifiers (h l ll j z t L q w I I32 I64) are accepted and mean nothing, since each
/// argument knows its size.
/// "%%" is a percent sign. A conversion for which no argument is left, a letter that is none of the above,
/// and a '%' at the end stay as they stand; arguments that are left over are ignored.
///
/// Texts are bytes, of any length. The locale has no part in it.
namespace kxcom {

/// The arguments' array form, which the templates below call. A null format gives "". `count` of 0 is
/// "without arguments". Throws std::bad_alloc. Any thread.
QUORMSGHANDLE_API std::string formatMessage(const char* format, const MsgArg* arguments, std::size_t count);
QUORMSGHANDLE_API void showMessage(const char* text, const MsgArg* arguments, std::size_t count);

/// Shows a message to the user through the message sink; a null text shows nothing. When memory runs out
/// while formatting, the text is shown unformatted. Throws nothing. Any thread.
QUORMSGHANDLE_API void errorMsg(const char* text);

template<class First, class... Rest>
void errorMsg(const char* text, const First& first, const Rest&... rest)
{
    const MsgArg arguments[] = {MsgArg(first), MsgArg(rest)...};
    showMessage(text, arguments, 1 + sizeof...(rest));
}

/// Formats a message. A null format gives "". Throws std::bad_alloc. Any thread.
QUORMSGHANDLE_API std::string printMsg(const char* format);

template<class First, class... Rest>
std::string printMsg(const char* format, const First& first, const Rest&... rest)
{
    const MsgArg arguments[] = {MsgArg(first), MsgArg(rest)...};
    return formatMessage(format, arguments, 1 + sizeof...(rest));
}

/// Receives each message that is shown: `text`, never null, is valid during the call; an argument's NUL byte
/// ends it. `user` is what was set with the sink. Called on the thread that shows the message; it must throw
/// nothing and raise no Lua error.
using MessageSink = void (*)(const char* text, void* user);

/// Sets where messages go, for the whole process. Null goes back to the default: the text and a line feed, as
/// bytes, on standard error. The caller keeps `user` alive. To be called while no other thread shows
/// messages.
QUORMSGHANDLE_API void setMessageSink(MessageSink sink, void* user);

} // namespace kxcom
