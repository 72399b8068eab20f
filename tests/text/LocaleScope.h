// Runs a block of checks under a named process locale, for the C library and the C++ streams
// alike, and puts "C" back afterwards.
#ifndef TESSERA_TESTS_TEXT_LOCALESCOPE_H
#define TESSERA_TESTS_TEXT_LOCALESCOPE_H

#include <clocale>
#include <locale>

class LocaleScope {
 public:
  explicit LocaleScope(const char* name) : active(std::setlocale(LC_ALL, name) != nullptr) {
    if (active) std::locale::global(std::locale(name));
  }
  ~LocaleScope() {
    std::setlocale(LC_ALL, "C");
    std::locale::global(std::locale::classic());
  }
  LocaleScope(const LocaleScope&) = delete;
  LocaleScope& operator=(const LocaleScope&) = delete;

  const bool active;
};

// Skips the test, with the reason, when the locale can't be set.
#define REQUIRE_LOCALE(scope, name) \
  LocaleScope scope(name);          \
  if (!scope.active)              \
  GTEST_SKIP() << "locale " << name \
               << " is not available; generate it (locale-gen) to run this test"

#endif  // TESSERA_TESTS_TEXT_LOCALESCOPE_H
