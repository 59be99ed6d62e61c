#include "../system.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iconv.h>
#include <pthread.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace sys {

void setEnvironment(const char* name, const char* value)
{
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

std::filesystem::path makeFolder(const std::string& prefix)
{
    std::string name = (std::filesystem::temp_directory_path() / (prefix + "-XXXXXX")).string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder like " + name);
    return std::filesystem::canonical(name);
}

CommaLocale::CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)), folder_(makeFolder("quor-locale"))
{
    const std::string place = folder_.string();
    const bool isMade =
        std::system(("localedef -i de_DE -f UTF-8 '" + place + "/de_DE.UTF-8' 2>&1").c_str()) == 0;
    if (const char* places = std::getenv("LOCPATH")) placesBefore_ = places;
    setEnvironment("LOCPATH", place.c_str());
    isSet_ = isMade && std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
}

CommaLocale::~CommaLocale()
{
    std::setlocale(LC_ALL, before_.c_str());
    setEnvironment("LOCPATH", placesBefore_ ? placesBefore_->c_str() : nullptr);
    std::filesystem::remove_all(folder_);
}

const char* const nativeModuleSuffix = ".so";

std::string inSystemForm(std::string path)
{
    return path;
}

bool setFileTime(const std::string& path, long long seconds, long nanoseconds)
{
    const timespec time = {static_cast<time_t>(seconds), nanoseconds};
    const timespec times[2] = {time, time};
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

bool makeLink(const std::string& target, const std::string& link)
{
    return symlink(target.c_str(), link.c_str()) == 0;
}

Obstacle::Obstacle(const std::string& path) : path_(path)
{
    if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe at " + path);
}

Obstacle::~Obstacle()
{
    unlink(path_.c_str());
}

const bool FileLock::excludesOthers = false;

FileLock::FileLock(const std::string& path) : handle_(std::fopen(path.c_str(), "r+b"))
{
    if (!handle_ || flock(fileno(static_cast<std::FILE*>(handle_)), LOCK_EX) != 0)
        throw std::runtime_error("no lock of " + path);
}

FileLock::~FileLock()
{
    std::fclose(static_cast<std::FILE*>(handle_));
}

std::string FileLock::read() const
{
    char bytes[100];
    auto* file = static_cast<std::FILE*>(handle_);
    std::rewind(file);
    return {bytes, std::fread(bytes, 1, sizeof bytes, file)};
}

std::vector<std::string> devices()
{
    return {"/dev/zero", "/dev/null"};
}

unsigned int threadId()
{
    return static_cast<unsigned int>(syscall(SYS_gettid));
}

const void* threadLocale()
{
    return uselocale(nullptr);
}

std::string pathOf(std::string_view text)
{
    return std::string(text);
}

std::string outputOf(const std::string& program, const std::filesystem::path& folder)
{
    const std::string command = "cd '" + folder.string() + "' && '" + program + "'";
    std::FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return "no pipe";
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        text += static_cast<char>(c);
    return pclose(pipe) == 0 ? text : "failed: " + text;
}

std::optional<std::string> utf8FromGbk(std::string_view gbk)
{
    const iconv_t converter = iconv_open("UTF-8", "GBK");
    if (converter == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no converter for GBK");
    std::string utf8(gbk.size() * 3 + 1, '\0');
    char* from = const_cast<char*>(gbk.data());
    char* to = utf8.data();
    std::size_t left = gbk.size();
    std::size_t room = utf8.size();
    const bool whole = iconv(converter, &from, &left, &to, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    if (!whole) return std::nullopt;
    utf8.resize(utf8.size() - room);
    return utf8;
}

FewFiles::FewFiles()
{
    constexpr rlim_t few = 64;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    before_ = limit.rlim_cur;
    limit.rlim_cur = std::min(few, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
}

FewFiles::~FewFiles()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(before_);
    setrlimit(RLIMIT_NOFILE, &limit);
}

bool runOnStack(std::size_t bytes, void (*work)(void* data), void* data)
{
    struct Task {
        void (*work)(void* data);
        void* data;
    } task{work, data};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread{};
    const auto run = [](void* given) -> void* {
        const Task* wanted = static_cast<Task*>(given);
        wanted->work(wanted->data);
        return nullptr;
    };
    const bool started = pthread_attr_setstacksize(&attributes, bytes) == 0 &&
                         pthread_create(&thread, &attributes, run, &task) == 0;
    pthread_attr_destroy(&attributes);
    return started && pthread_join(thread, nullptr) == 0;
}

} // namespace sys
