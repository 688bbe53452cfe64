// A locale in which the C library reads and writes a decimal comma.

#ifndef TESSARIN_TESTS_SUPPORT_COMMA_LOCALE_H
#define TESSARIN_TESTS_SUPPORT_COMMA_LOCALE_H

#include <clocale>
#include <stdexcept>
#include <string>

namespace TestSupport {

/// Sets the locale while the object lives. Throws if there is no such locale: the build makes one, or the system has
/// one.
class CommaLocale {
public:
    CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
        for (const char* name : {"de_DE.UTF-8", "German"}) {
            if (std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',') return;
        }
        throw std::runtime_error("no locale with a decimal comma");
    }
    ~CommaLocale() { std::setlocale(LC_ALL, before_.c_str()); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::string before_;
};

} // namespace TestSupport

#endif
