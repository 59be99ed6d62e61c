#include "../Converter.h"

#include <cerrno>
#include <iconv.h>

namespace quor::charset {

struct Converter::Sets {
    explicit Sets(iconv_t opened) : handle(opened) {}
    ~Sets() { iconv_close(handle); }
    Sets(const Sets&) = delete;
    Sets& operator=(const Sets&) = delete;

    iconv_t handle;
};

Converter::Converter(const char* to, const char* from)
{
    iconv_t handle = iconv_open(to, from);
    if (handle != reinterpret_cast<iconv_t>(-1)) sets_ = std::make_unique<const Sets>(handle);
}

Converter::~Converter() = default;

void Converter::convert(std::string_view& from, std::string& to) const
{
    if (!isOpen()) return;
    char buffer[1024];
    while (!from.empty()) {
        char* source = const_cast<char*>(from.data());
        std::size_t left = from.size();
        char* target = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t result = iconv(sets_->handle, &source, &left, &target, &room);
        to.append(buffer, sizeof buffer - room);
        from.remove_prefix(from.size() - left);
        if (result == static_cast<std::size_t>(-1) && errno != E2BIG) break;
    }
    iconv(sets_->handle, nullptr, nullptr, nullptr, nullptr);
}

} // namespace quor::charset
