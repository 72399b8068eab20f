#include <tessera/platform/SystemInfo.h>

#include <cstdio>
#include <string>

#include <sys/utsname.h>

#include <gtest/gtest.h>

using Tessera::GetWindowsEdition;
using Tessera::OsVersionInfo;

namespace {

OsVersionInfo Version(std::uint32_t platform, std::uint32_t major, std::uint32_t minor, std::uint32_t build = 0) {
  OsVersionInfo info;
  info.platformId = platform;
  info.majorVersion = major;
  info.minorVersion = minor;
  info.buildNumber = build;
  return info;
}

std::string Edition(const OsVersionInfo& info) { return GetWindowsEdition(info); }

}  // namespace

TEST(SystemInfo, PlatformsWithoutNt) {
  EXPECT_EQ(Edition(Version(0, 3, 11)), "Win32s");
  EXPECT_EQ(Edition(Version(0, 4, 0, 5000)), "Win32s");
  EXPECT_EQ(Edition(Version(1, 5, 0)), "Windows");
  EXPECT_EQ(Edition(Version(1, 3, 10)), "Windows");
  EXPECT_EQ(Edition(Version(1, 4, 0, 1080)), "Windows 95");
  EXPECT_EQ(Edition(Version(1, 4, 0, 1081)), "Windows 95 OSR2");
  EXPECT_EQ(Edition(Version(1, 4, 0, 0x04000457)), "Windows 95 OSR2");  // high word not masked
  EXPECT_EQ(Edition(Version(1, 4, 10, 2183)), "Windows 98");
  EXPECT_EQ(Edition(Version(1, 4, 10, 2184)), "Windows 98 SE");
  EXPECT_EQ(Edition(Version(1, 4, 90, 3000)), "Windows Me");
  EXPECT_EQ(Edition(Version(1, 4, 3)), "Windows");
  EXPECT_EQ(Edition(Version(3, 6, 0)), "Windows");
  EXPECT_EQ(Edition(Version(0xFFFFFFFFu, 5, 1)), "Windows");
}

TEST(SystemInfo, NtVersionSix) {
  OsVersionInfo info = Version(2, 6, 0);
  info.productType = 1;
  EXPECT_EQ(Edition(info), "Windows Vista");
  info.productType = 3;
  EXPECT_EQ(Edition(info), "Windows Server 2008");
  info.productType = 0;
  EXPECT_EQ(Edition(info), "Windows Server 2008");
  info = Version(2, 6, 1);
  info.productType = 1;
  EXPECT_EQ(Edition(info), "Windows NT");
  EXPECT_EQ(Edition(Version(2, 7, 0)), "Windows NT");
  EXPECT_EQ(Edition(Version(2, 10, 0)), "Windows NT");
  EXPECT_EQ(Edition(Version(2, 4, 0)), "Windows NT");
}

TEST(SystemInfo, NtVersionFive) {
  OsVersionInfo info = Version(2, 5, 2);
  info.serverR2 = true;
  info.suiteMask = 0x2000;
  info.productType = 1;
  EXPECT_EQ(Edition(info), "Window Server 2003 R2");
  info.serverR2 = false;
  EXPECT_EQ(Edition(info), "Windows Storage Server 2003");
  info.suiteMask = 0x2001;
  EXPECT_EQ(Edition(info), "Windows XP");
  info.productType = 2;
  EXPECT_EQ(Edition(info), "Windows Server 2003");
  info.suiteMask = 0;
  info.productType = 3;
  EXPECT_EQ(Edition(info), "Windows Server 2003");

  info = Version(2, 5, 1);
  info.productType = 3;
  EXPECT_EQ(Edition(info), "Windows XP");
  info.productType = 1;
  EXPECT_EQ(Edition(info), "Windows XP");

  info = Version(2, 5, 0);
  info.productType = 1;
  EXPECT_EQ(Edition(info), "Windows 2000 Professional");
  info.productType = 2;
  EXPECT_EQ(Edition(info), "Windows 2000 Server");
  EXPECT_EQ(Edition(Version(2, 5, 3)), "Windows NT");
}

TEST(SystemInfo, TypeAndVersionTextsFromGivenValues) {
  OsVersionInfo info = Version(2, 5, 1, 2600);
  info.csdVersion = "Service Pack 2";
  std::string text = "old";
  EXPECT_TRUE(Tessera::GetSystemType(info, text));
  EXPECT_EQ(text, "Windows XP Service Pack 2");
  EXPECT_TRUE(Tessera::GetSystemVersion(info, text));
  EXPECT_EQ(text, "5.1 (build 2600)");
  info.csdVersion.clear();
  EXPECT_TRUE(Tessera::GetSystemType(info, text));
  EXPECT_EQ(text, "Windows XP");
  info = Version(2, 4294967295u, 4294967295u, 4294967295u);
  EXPECT_TRUE(Tessera::GetSystemVersion(info, text));
  EXPECT_EQ(text, "4294967295.4294967295 (build 4294967295)");
}

TEST(SystemInfo, RunningSystemWithoutWindowsVersion) {
  EXPECT_EQ(GetWindowsEdition(), nullptr);
  unsigned int major = 11, minor = 12, build = 13;
  std::string servicePack = "unchanged";
  EXPECT_FALSE(Tessera::GetWindowsVersion(major, minor, build, &servicePack));
  EXPECT_EQ(major, 11u);
  EXPECT_EQ(minor, 12u);
  EXPECT_EQ(build, 13u);
  EXPECT_EQ(servicePack, "unchanged");

  ::utsname system;
  ASSERT_EQ(::uname(&system), 0);
  std::string text;
  EXPECT_TRUE(Tessera::GetSystemType(text));
  EXPECT_EQ(text, std::string(system.sysname) + " " + system.release);
  unsigned int numbers[3] = {0, 0, 0};
  std::sscanf(system.release, "%u.%u.%u", &numbers[0], &numbers[1], &numbers[2]);
  EXPECT_TRUE(Tessera::GetSystemVersion(text));
  EXPECT_EQ(text, std::to_string(numbers[0]) + "." + std::to_string(numbers[1]) + " (build " +
                      std::to_string(numbers[2]) + ")");
}
