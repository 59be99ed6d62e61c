#pragma once

#include <clocale>
#include <cstdio>
#include <cstring>

namespace lua_tinker::detail {

/// While one lives, the C library formats on this thread as in the "C" locale, whatever the host's is. No
/// other thread notices.
class NeutralLocale {
public:
    NeutralLocale(const NeutralLocale&) = delete;
    NeutralLocale& operator=(const NeutralLocale&) = delete;

#if defined(_WIN32)

    // Where numbers look as they should, nothing is changed: that is costly here.
    NeutralLocale() : changes_(std::strcmp(std::localeconv()->decimal_point, ".") != 0)
    {
        if (!changes_) return;
        mode_ = _configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
        const char* name = std::setlocale(LC_NUMERIC, nullptr);
        std::snprintf(before_, sizeof before_, "%s", name ? name : "C");
        std::setlocale(LC_NUMERIC, "C");
    }
    ~NeutralLocale()
    {
        if (!changes_) return;
        std::setlocale(LC_NUMERIC, before_);
        _configthreadlocale(mode_);
    }

private:
    bool changes_;
    int mode_ = 0;
    char before_[256] = {};

#else

    // The locale "C" as a whole is there from the start: no memory is taken for it, so this cannot fail.
    NeutralLocale() : neutral_(::newlocale(LC_ALL_MASK, "C", nullptr)), before_(::uselocale(neutral_)) {}
    ~NeutralLocale()
    {
        ::uselocale(before_);
        ::freelocale(neutral_);
    }

private:
    locale_t neutral_;
    locale_t before_;

#endif
};

} // namespace lua_tinker::detail
