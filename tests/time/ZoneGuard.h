// Puts the process into a POSIX zone for one test and restores the previous TZ after it.
#ifndef TESSERA_TESTS_TIME_ZONEGUARD_H
#define TESSERA_TESTS_TIME_ZONEGUARD_H

#include <cstdlib>
#include <ctime>
#include <string>

class ZoneGuard {
 public:
  // A POSIX TZ text such as "<-0530>5:30" (five and a half hours west, no daylight
  // saving): no zone database is needed.
  explicit ZoneGuard(const char* zone) {
    const char* previous = std::getenv("TZ");
    hadZone_ = previous != nullptr;
    if (hadZone_) previous_ = previous;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZoneGuard() {
    if (hadZone_) {
      ::setenv("TZ", previous_.c_str(), 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
  }
  ZoneGuard(const ZoneGuard&) = delete;
  ZoneGuard& operator=(const ZoneGuard&) = delete;

 private:
  bool hadZone_ = false;
  std::string previous_;
};

constexpr const char* zoneWest0530 = "<-0530>5:30";
constexpr const char* zoneEast0100 = "<+01>-1";
constexpr const char* zoneWest0500 = "<-05>5";
constexpr const char* zoneWest0030 = "<-0030>0:30";

#endif  // TESSERA_TESTS_TIME_ZONEGUARD_H
