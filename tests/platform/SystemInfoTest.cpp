#include <tessera/platform/SystemInfo.h>

#include <cstdio>
#include <string>

#include <sys/utsname.h>

#include <gtest/gtest.h>

using Tessera::OsVersionInfo;

TEST(SystemInfo, EditionTableEveryRowAndBoundary) {
  // platform, major, minor, build, service pack, suite mask, product type, server R2
  const struct { OsVersionInfo info; const char* edition; } rows[] = {
      {{0, 4, 0, 5000, "", 0, 1, false}, "Win32s"}, {{1, 5, 0, 0, "", 0, 0, false}, "Windows"},
      {{1, 4, 0, 1080, "", 0, 0, false}, "Windows 95"}, {{1, 4, 0, 1081, "", 0, 0, false}, "Windows 95 OSR2"},
      {{1, 4, 0, 0x04000000, "", 0, 0, false}, "Windows 95 OSR2"},  // the high word is not masked
      {{1, 4, 10, 2183, "", 0, 0, false}, "Windows 98"}, {{1, 4, 10, 2184, "", 0, 0, false}, "Windows 98 SE"},
      {{1, 4, 90, 3000, "", 0, 0, false}, "Windows Me"}, {{1, 4, 3, 0, "", 0, 0, false}, "Windows"},
      {{2, 6, 0, 0, "", 0, 1, false}, "Windows Vista"}, {{2, 6, 0, 0, "", 0, 3, false}, "Windows Server 2008"},
      {{2, 6, 1, 0, "", 0, 1, false}, "Windows NT"}, {{2, 5, 2, 0, "", 0x2000, 1, true}, "Window Server 2003 R2"},
      {{2, 5, 2, 0, "", 0x2000, 1, false}, "Windows Storage Server 2003"},
      {{2, 5, 2, 0, "", 0x2001, 1, false}, "Windows XP"}, {{2, 5, 2, 0, "", 0x2001, 3, false}, "Windows Server 2003"},
      {{2, 5, 1, 0, "", 0, 3, false}, "Windows XP"}, {{2, 5, 0, 0, "", 0, 1, false}, "Windows 2000 Professional"},
      {{2, 5, 0, 0, "", 0, 2, false}, "Windows 2000 Server"}, {{2, 5, 3, 0, "", 0, 1, false}, "Windows NT"},
      {{2, 7, 0, 0, "", 0, 1, false}, "Windows NT"}, {{2, 4, 0, 0, "", 0, 1, false}, "Windows NT"},
      {{3, 6, 0, 0, "", 0, 1, false}, "Windows"}, {{0xFFFFFFFFu, 5, 1, 0, "", 0, 1, false}, "Windows"},
  };
  for (const auto& row : rows)
    EXPECT_STREQ(Tessera::GetWindowsEdition(row.info), row.edition) << "row " << &row - rows;
  OsVersionInfo xp{2, 5, 1, 2600, "Service Pack 2", 0, 0, false};
  std::string type, version;
  EXPECT_TRUE(Tessera::GetSystemType(xp, type) && Tessera::GetSystemVersion(xp, version));
  EXPECT_EQ(type, "Windows XP Service Pack 2");
  EXPECT_EQ(version, "5.1 (build 2600)");
  xp.csdVersion.clear();
  EXPECT_TRUE(Tessera::GetSystemType(xp, type));
  EXPECT_EQ(type, "Windows XP");
}

// Off Windows the edition and version fail and leave their outputs; type and version
// describe the kernel.
TEST(SystemInfo, RunningSystemIsTheKernel) {
  EXPECT_EQ(Tessera::GetWindowsEdition(), nullptr);
  unsigned int numbers[3] = {11, 12, 13};
  std::string servicePack = "unchanged";
  EXPECT_FALSE(Tessera::GetWindowsVersion(numbers[0], numbers[1], numbers[2], &servicePack));
  EXPECT_TRUE(numbers[0] == 11 && numbers[1] == 12 && numbers[2] == 13 && servicePack == "unchanged");

  ::utsname system;
  ASSERT_EQ(::uname(&system), 0);
  std::string type, version;
  EXPECT_TRUE(Tessera::GetSystemType(type) && Tessera::GetSystemVersion(version));
  EXPECT_EQ(type, std::string(system.sysname) + " " + system.release);
  numbers[0] = numbers[1] = numbers[2] = 0;
  std::sscanf(system.release, "%u.%u.%u", &numbers[0], &numbers[1], &numbers[2]);
  EXPECT_EQ(version, std::to_string(numbers[0]) + "." + std::to_string(numbers[1]) + " (build " +
                         std::to_string(numbers[2]) + ")");
}
