// The byte source and the shared file of local files.
#include "playback/byte_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "playback/locked_file.h"
#include "support/test_environment.h"

namespace {

using playback::ByteSource;
using playback::LockedFile;

class LockedFileTest : public ::testing::Test {
 protected:
  std::string Make(const std::string& name, const std::string& contents) {
    const std::string path = folder.File(name);
    testing_support::WriteFile(path, contents);
    return path;
  }
  testing_support::TemporaryDirectory folder;
  LockedFile file;
};

TEST(ByteSourceTest, ThePlainSourceHasNothingAndClaimsTheLargestSize) {
  ByteSource source;
  EXPECT_EQ(source.GetSize(), 0x7fffffffffffffff);
  EXPECT_EQ(source.ReadU32(), 0u);
  EXPECT_EQ(source.GetError(), 1);
  EXPECT_EQ(source.IsOpen(), 0);
}

TEST_F(LockedFileTest, ASecondOpenIsRefusedAndTheFirstFileStaysOpen) {
  const std::string first = Make("first", "ABCD");
  const std::string second = Make("second", "WXYZ");
  ASSERT_EQ(file.Open(first.c_str()), 1);
  EXPECT_EQ(file.Open(second.c_str()), 0);
  EXPECT_EQ(file.IsOpen(), 1);
  EXPECT_EQ(file.ReadU8(), 'A');
  EXPECT_EQ(file.GetSize(), 4);
  EXPECT_EQ(file.Close(), 1);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(file.Open(second.c_str()), 1);
  EXPECT_EQ(file.ReadU8(), 'W');
}

TEST_F(LockedFileTest, AShortReadLeavesTheErrorSetUntilTheNextOpen) {
  const std::string path = Make("short", std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A", 10));
  ASSERT_EQ(file.Open(path.c_str()), 1);
  EXPECT_EQ(file.ReadU64(), 0x0807060504030201u);
  EXPECT_EQ(file.GetError(), 0);
  EXPECT_EQ(file.ReadU32(), 0u) << "only two bytes are left";
  EXPECT_EQ(file.GetError(), 1);
  EXPECT_EQ(file.Seek(0, ByteSource::kFromBegin), 0);
  EXPECT_EQ(file.ReadU16(), 0x0201u);
  EXPECT_EQ(file.GetError(), 1) << "sticky";
  EXPECT_EQ(file.Seek(-2, ByteSource::kFromEnd), 8);
  EXPECT_EQ(file.Seek(1, ByteSource::kFromCurrent), 9);
  EXPECT_EQ(file.Seek(-20, ByteSource::kFromBegin), ByteSource::kSeekFailed);
  file.Close();
  ASSERT_EQ(file.Open(path.c_str()), 1);
  EXPECT_EQ(file.GetError(), 0);
}

TEST_F(LockedFileTest, OnlyRegularFilesOpenAndAPipeNeverBlocks) {
  ASSERT_EQ(::mkfifo(folder.File("pipe").c_str(), 0600), 0);
  EXPECT_EQ(file.Open(folder.File("pipe").c_str()), 0);
  EXPECT_EQ(file.Open(folder.Path().c_str()), 0);
  EXPECT_EQ(file.Open(folder.File("missing").c_str()), 0);
  EXPECT_EQ(file.IsOpen(), 0);
  EXPECT_EQ(file.Seek(0, ByteSource::kFromBegin), ByteSource::kSeekFailed);
}

}  // namespace
