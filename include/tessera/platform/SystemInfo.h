// Naming and numbering the operating system.
//
// The edition table turns eight values of a Windows version record (OsVersionInfo) into
// an edition name; it runs on given values as well as on the running system. On a system
// that has no Windows version, such as Linux, GetWindowsEdition() gives null and
// GetWindowsVersion false, while GetSystemType and GetSystemVersion describe the running
// kernel: "Linux 6.1.0-18-amd64" and "6.1 (build 0)". Nothing is thrown but
// std::bad_alloc from the strings; the functions keep no state.
#ifndef TESSERA_PLATFORM_SYSTEMINFO_H
#define TESSERA_PLATFORM_SYSTEMINFO_H

#include <cstdint>
#include <string>

#include <tessera_export.h>

namespace Tessera {

// What the edition table reads of a Windows version record.
struct OsVersionInfo {
  std::uint32_t platformId = 0;    // 0 Win32s, 1 Windows 9x, 2 Windows NT
  std::uint32_t majorVersion = 0;
  std::uint32_t minorVersion = 0;
  std::uint32_t buildNumber = 0;   // compared whole, high word included
  std::string csdVersion;          // the service pack, such as "Service Pack 2"
  std::uint16_t suiteMask = 0;
  std::uint8_t productType = 0;    // 1 is a workstation
  bool serverR2 = false;           // the server-R2 system metric is not 0
};

// The edition name of the table for these values, a static text such as "Windows XP".
// Kept for compatibility: Server 2003 R2 is "Window Server 2003 R2", without the "s", as
// callers compare it.
TESSERA_API const char* GetWindowsEdition(const OsVersionInfo& info);
// The edition of the running system, or null when it has no Windows version.
TESSERA_API const char* GetWindowsEdition();

// The running system's version numbers and, when `servicePack` is not null, its service
// pack text. False, with the outputs as they were, when it has no Windows version.
[[nodiscard]] TESSERA_API bool GetWindowsVersion(unsigned int& major, unsigned int& minor,
                                                 unsigned int& build, std::string* servicePack);

// The edition, then one space and the service pack when there is one:
// "Windows XP Service Pack 2". Always true for given values.
TESSERA_API bool GetSystemType(const OsVersionInfo& info, std::string& text);
// The same for the running system; on a system without Windows versions, the kernel's name
// and release ("Linux 6.1.0-18-amd64"). False, with `text` as it was, if neither is known.
[[nodiscard]] TESSERA_API bool GetSystemType(std::string& text);

// "major.minor (build n)" for the given values: "5.1 (build 2600)".
TESSERA_API bool GetSystemVersion(const OsVersionInfo& info, std::string& text);
// The same for the running system; on a system without Windows versions, the first three
// numbers of the kernel release ("6.1.0-18-amd64" gives "6.1 (build 0)"). False, with
// `text` as it was, if neither is known.
[[nodiscard]] TESSERA_API bool GetSystemVersion(std::string& text);

}  // namespace Tessera

#endif  // TESSERA_PLATFORM_SYSTEMINFO_H
