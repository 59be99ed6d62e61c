#pragma once

#include <clocale>

/// While one lives, the C library, and with it the interpreter, reads and writes numbers in the "C" locale on
/// this thread: for what is compared with them, and only there.
class NeutralLocale {
public:
    NeutralLocale() : neutral_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(neutral_)) {}
    ~NeutralLocale()
    {
        uselocale(before_);
        freelocale(neutral_);
    }
    NeutralLocale(const NeutralLocale&) = delete;
    NeutralLocale& operator=(const NeutralLocale&) = delete;

private:
    locale_t neutral_;
    locale_t before_;
};
