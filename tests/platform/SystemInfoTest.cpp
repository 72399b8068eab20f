#include <tessera/platform/SystemInfo.h>

#include <cstdio>
#include <string>
#include <tuple>

#include <sys/utsname.h>

#include <gtest/gtest.h>

using Tessera::OsVersionInfo;

// Not the table row by row: the boundaries a slip would move, and the deliberate text.
TEST(SystemInfo, EditionBoundaries) {
  // platform, major, minor, build, service pack, suite mask, product type, server R2
  const struct { OsVersionInfo info; const char* edition; } rows[] = {
      {{1, 4, 0, 1080, "", 0, 0, false}, "Windows 95"}, {{1, 4, 0, 1081, "", 0, 0, false}, "Windows 95 OSR2"},
      {{1, 4, 0, 0x04000000, "", 0, 0, false}, "Windows 95 OSR2"},  // the high word is not masked
      {{1, 4, 10, 2183, "", 0, 0, false}, "Windows 98"}, {{1, 4, 10, 2184, "", 0, 0, false}, "Windows 98 SE"},
      {{2, 5, 2, 0, "", 0x2000, 1, true}, "Window Server 2003 R2"},  // kept for compatibility
      {{2, 5, 2, 0, "", 0x2000, 1, false}, "Windows Storage Server 2003"},
      {{2, 5, 2, 0, "", 0x2001, 1, false}, "Windows XP"}, {{3, 6, 0, 0, "", 0, 1, false}, "Windows"}};
  for (const auto& row : rows)
    EXPECT_STREQ(Tessera::GetWindowsEdition(row.info), row.edition) << "row " << &row - rows;
  OsVersionInfo xp{2, 5, 1, 2600, "Service Pack 2", 0, 0, false};
  std::string type, version;
  EXPECT_TRUE(Tessera::GetSystemType(xp, type));
  EXPECT_TRUE(Tessera::GetSystemVersion(xp, version));
  EXPECT_EQ(type + "|" + version, "Windows XP Service Pack 2|5.1 (build 2600)");
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
  EXPECT_EQ(std::make_tuple(numbers[0], numbers[1], numbers[2], servicePack), std::make_tuple(11u, 12u, 13u, "unchanged"));

  ::utsname system;
  ASSERT_EQ(::uname(&system), 0);
  std::string type, version;
  EXPECT_TRUE(Tessera::GetSystemType(type));
  EXPECT_TRUE(Tessera::GetSystemVersion(version));
  EXPECT_EQ(type, std::string(system.sysname) + " " + system.release);
  numbers[0] = numbers[1] = numbers[2] = 0;
  std::sscanf(system.release, "%u.%u.%u", &numbers[0], &numbers[1], &numbers[2]);
  EXPECT_EQ(version, std::to_string(numbers[0]) + "." + std::to_string(numbers[1]) + " (build " +
                         std::to_string(numbers[2]) + ")");
}
