#pragma once

#include "System.h"

#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

/// What passes between the command and whoever runs it. The command's own texts, arguments as well as what
/// is composed for people, are in one character set: that of LC_ALL, LC_CTYPE or LANG, be their locale on
/// this system or not; where these name none but ASCII, UTF-8. It is that of file names, too, and of all that
/// is printed.
///
/// On Windows these are three: the command's texts are UTF-8; file names are in the ANSI code page wherever
/// the library takes or gives them; and what is printed is in the set that the variables name, else in that
/// of the console, else in the ANSI code page.
///
/// The locale decides nothing else: the process itself stays in the locale "C".
namespace quor::terminal {

/// Reads the character sets, before anything that a locale could disturb.
void start();

/// The set of the command's own texts.
const std::string& characterSet();
/// Whether file names are in UTF-8.
bool namesAreUtf8();

/// An argument as UTF-8; bytes that are no characters are kept (see CharacterSet.h).
std::string utf8From(std::string_view bytes);
/// An argument. A `Failure` (wrong usage) that begins with `place` when it is no text.
std::string utf8From(std::string_view bytes, const std::string& place);
/// An argument as a text for a script. A `Failure` (wrong usage) that begins with `place` when it is no
/// text or cannot be written in GBK.
std::string gbkFrom(std::string_view bytes, const std::string& place);
/// The same for a text in UTF-8.
std::string gbkFromUtf8(std::string_view utf8, const std::string& place);

std::string fromUtf8(std::string_view utf8);
/// A script's text, such as the name of a segment.
std::string fromGbk(std::string_view gbk);

/// A file name as the library takes it. A `Failure` (wrong usage) that begins with `place` when a character
/// of it has no place in the character set of file names.
std::string systemName(const std::string& name, const std::string& place);
/// A file name that the library gave.
std::string fromSystemName(std::string_view name);

/// Tells that messages may contain this file or folder, as the library names it: those of this thread while
/// it has a `MessageScope`, else all, and then no other thread speaks at that time.
void expectPath(const std::string& path);

/// As long as it lives, what is said on its thread is said of one job of several: it begins with that job's
/// name, and the paths expected on the thread are the job's own. One on a thread at a time.
class MessageScope {
public:
    explicit MessageScope(std::string name);
    ~MessageScope();
    MessageScope(const MessageScope&) = delete;
    MessageScope& operator=(const MessageScope&) = delete;

    const std::string& name() const { return name_; }
    std::vector<std::string>& paths() { return paths_; }

private:
    std::string name_;
    std::vector<std::string> paths_;
};

/// The line at the end of standard error that is written anew as work goes on, in ASCII and no wider than a
/// terminal; other lines are put above it. Empty for none.
void showStatus(std::string_view line);
/// A message of a script or of the host: its words are GBK, while the paths in it, the expected ones and
/// those before a line's number, stand as the system has them.
std::string fromMessage(std::string_view message);
/// The same in UTF-8.
std::string utf8FromMessage(std::string_view message);

/// A text in UTF-8 as the bytes that are written to a file or stream.
std::string printed(std::string_view utf8, system::Stream stream);

/// Writes a line to standard error, where everything for people goes. Any thread may, and lines of several
/// come one behind the other.
void writeError(std::string_view line);

template<class... Arguments>
void say(fmt::format_string<Arguments...> format, Arguments&&... arguments)
{
    writeError(fmt::format(format, std::forward<Arguments>(arguments)...));
}

/// Shows a message on lines of its own: line feeds at its beginning, which set it off in a log, are left out.
/// When memory runs out, the bytes are shown as they are. Throws nothing.
void showMessage(std::string_view message);
/// The same, in the form that `kxcom::setMessageSink` takes.
void showMessage(const char* text, void* user);

} // namespace quor::terminal
