#include <tessera/platform/SystemInfo.h>

#include <cstdio>
#include <cstring>

#include <sys/utsname.h>

namespace Tessera {

namespace {

constexpr std::uint8_t workstation = 1;          // VER_NT_WORKSTATION
constexpr std::uint16_t storageServer = 0x2000;  // VER_SUITE_STORAGE_SERVER

// The running system's Windows version record. This platform has none.
bool QueryWindowsVersion(OsVersionInfo& /*info*/) { return false; }

// The kernel's version numbers: the leading numbers of its release, missing ones 0.
bool QueryKernel(std::string* name, unsigned int& major, unsigned int& minor, unsigned int& build) {
  ::utsname system;
  if (::uname(&system) != 0) return false;
  unsigned int numbers[3] = {0, 0, 0};
  const char* cursor = system.release;
  for (unsigned int& number : numbers) {
    if (*cursor < '0' || *cursor > '9') break;
    for (; *cursor >= '0' && *cursor <= '9'; ++cursor) number = number * 10 + static_cast<unsigned int>(*cursor - '0');
    if (*cursor != '.') break;
    ++cursor;
  }
  major = numbers[0];
  minor = numbers[1];
  build = numbers[2];
  if (name != nullptr) *name = std::string(system.sysname) + ' ' + system.release;
  return true;
}

bool FormatVersion(unsigned int major, unsigned int minor, unsigned int build, std::string& text) {
  char buffer[128];
  const int length = std::snprintf(buffer, sizeof buffer, "%u.%u (build %u)", major, minor, build);
  if (length < 0 || static_cast<unsigned int>(length) >= sizeof buffer) return false;
  text.assign(buffer, static_cast<std::size_t>(length));
  return true;
}

const char* NtEdition(const OsVersionInfo& info) {
  if (info.majorVersion == 6) {
    if (info.minorVersion == 0) return info.productType == workstation ? "Windows Vista" : "Windows Server 2008";
    return "Windows NT";
  }
  if (info.majorVersion == 5) {
    switch (info.minorVersion) {
      case 2:
        // Kept for compatibility: the missing "s" is what callers compare against.
        if (info.serverR2) return "Window Server 2003 R2";
        if (info.suiteMask == storageServer) return "Windows Storage Server 2003";
        if (info.productType == workstation) return "Windows XP";
        return "Windows Server 2003";
      case 1:
        return "Windows XP";
      case 0:
        return info.productType == workstation ? "Windows 2000 Professional" : "Windows 2000 Server";
      default:
        return "Windows NT";
    }
  }
  return "Windows NT";
}

const char* NineXEdition(const OsVersionInfo& info) {
  if (info.majorVersion != 4) return "Windows";
  switch (info.minorVersion) {
    case 0:
      return info.buildNumber > 1080 ? "Windows 95 OSR2" : "Windows 95";
    case 10:
      return info.buildNumber > 2183 ? "Windows 98 SE" : "Windows 98";
    case 90:
      return "Windows Me";
    default:
      return "Windows";
  }
}

}  // namespace

const char* GetWindowsEdition(const OsVersionInfo& info) {
  switch (info.platformId) {
    case 0:
      return "Win32s";
    case 1:
      return NineXEdition(info);
    case 2:
      return NtEdition(info);
    default:
      return "Windows";
  }
}

const char* GetWindowsEdition() {
  OsVersionInfo info;
  if (!QueryWindowsVersion(info)) return nullptr;
  return GetWindowsEdition(info);
}

bool GetWindowsVersion(unsigned int& major, unsigned int& minor, unsigned int& build, std::string* servicePack) {
  OsVersionInfo info;
  if (!QueryWindowsVersion(info)) return false;
  major = info.majorVersion;
  minor = info.minorVersion;
  build = info.buildNumber;
  if (servicePack != nullptr) *servicePack = info.csdVersion;
  return true;
}

bool GetSystemType(const OsVersionInfo& info, std::string& text) {
  std::string result = GetWindowsEdition(info);
  if (!info.csdVersion.empty()) {
    result += ' ';
    result += info.csdVersion;
  }
  text.swap(result);
  return true;
}

bool GetSystemType(std::string& text) {
  OsVersionInfo info;
  if (QueryWindowsVersion(info)) return GetSystemType(info, text);
  std::string name;
  unsigned int major, minor, build;
  if (!QueryKernel(&name, major, minor, build)) return false;
  text.swap(name);
  return true;
}

bool GetSystemVersion(const OsVersionInfo& info, std::string& text) {
  return FormatVersion(info.majorVersion, info.minorVersion, info.buildNumber, text);
}

bool GetSystemVersion(std::string& text) {
  OsVersionInfo info;
  if (QueryWindowsVersion(info)) return GetSystemVersion(info, text);
  unsigned int major, minor, build;
  if (!QueryKernel(nullptr, major, minor, build)) return false;
  return FormatVersion(major, minor, build, text);
}

}  // namespace Tessera
