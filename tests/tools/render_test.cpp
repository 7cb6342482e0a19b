// tavrinsonic-render run as a user runs it: a list of WAV files that the
// test writes, in a private home, and the WAV file the tool writes.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "decoders/wav_test_files.h"
#include "platform/registry.h"
#include "support/test_environment.h"

namespace {

using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kRate = 22050;

// Stereo, every sample loud (1000 to 20999 in magnitude), different per track.
Samples Track(int k, std::size_t frames) {
  Samples samples(frames * 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const int value = 1000 + static_cast<int>((i * (7 + 2 * k) + 3000 * k) % 20000);
    samples[i] = static_cast<std::int16_t>(i % 2 == 0 ? value : -value);
  }
  return samples;
}

// The stretches of `samples` between silent frames (both channels 0): the
// tracks, since no frame of theirs is silent, without the silence the
// device played while one track gave way to the next.
std::vector<Samples> SoundingStretches(const Samples& samples) {
  std::vector<Samples> stretches;
  bool inSilence = true;
  for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
    const bool silent = samples[i] == 0 && samples[i + 1] == 0;
    if (!silent && inSilence) stretches.emplace_back();
    if (!silent) stretches.back().insert(stretches.back().end(), {samples[i], samples[i + 1]});
    inSilence = silent;
  }
  return stretches;
}

struct ToolRun {
  int status = -1;
  std::string output;
};

class RenderTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  ToolRun Render(const std::string& arguments) {
    ToolRun run;
    FILE* pipe = popen((std::string(TS_RENDER_TOOL) + " " + arguments + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> chunk{};
    std::size_t got = 0;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), pipe)) > 0) run.output.append(chunk.data(), got);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
  }
  std::string WriteTrack(const std::string& name, const Samples& samples) {
    const std::string path = Root().File("home/" + name);
    testing_support::WriteFile(path, wav_testing::PcmWav(samples, kRate, 2));
    return path;
  }
  Samples ReadOutput(const std::string& path) {
    const std::string data = wav_testing::SplitWav(testing_support::ReadFile(path)).data;
    Samples samples(data.size() / 2);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      samples[i] = static_cast<std::int16_t>(static_cast<std::uint8_t>(data[2 * i]) |
                                             static_cast<std::uint8_t>(data[2 * i + 1]) << 8);
    }
    return samples;
  }
};

// With crossfade, gapless and trimming off the tracks play one after the
// other, whole, with nothing but silence between them. What the player
// does on purpose stays: the end of the one-second prefill arms the silence
// threshold whatever the options, and the end mark then trims the tail with
// it, which drops the last loud sample of a track longer than the prefill
// (the device plays that half frame as silence).
TEST_F(RenderTest, AWavListRendersToTheTracksSamplesOneAfterTheOther) {
  const std::vector<Samples> tracks = {Track(0, 33075), Track(1, 11025), Track(2, 26000)};
  std::string list;
  for (std::size_t k = 0; k < tracks.size(); ++k)
    list += WriteTrack("t" + std::to_string(k) + ".wav", tracks[k]) + "\n";
  testing_support::WriteFile(Root().File("home/list.m3u"), list);
  platform::Registry user(Root().File("config/tavrinsonic/registry.reg"));
  ASSERT_NE(user.CreateKey(platform::RegistryRoot::LocalMachine, "SOFTWARE\\Halvorkeep\\Tavrinsonic"),
            platform::KeyDisposition::Failed);
  ASSERT_TRUE(
      user.SetDword(platform::RegistryRoot::LocalMachine, "SOFTWARE\\Halvorkeep\\Tavrinsonic", "XBS", 2));
  const std::string settingsBefore = testing_support::ReadFile(user.FilePath());

  const std::string out = Root().File("home/out.wav");
  const ToolRun run =
      Render("--crossfade off --gapless off --trim-silence off " + Root().File("home/list.m3u") + " " + out);
  ASSERT_EQ(run.status, 0) << run.output;

  std::vector<Samples> expected = tracks;
  for (Samples& track : expected) {
    if (track.size() / 2 > kRate) track.back() = 0;
  }
  EXPECT_EQ(SoundingStretches(ReadOutput(out)), expected);
  for (int k = 0; k < 3; ++k) EXPECT_NE(run.output.find("t" + std::to_string(k) + ".wav"), std::string::npos);
  EXPECT_NE(run.output.find("0:01.500"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("x real time"), std::string::npos) << run.output;
  EXPECT_EQ(testing_support::ReadFile(user.FilePath()), settingsBefore)
      << "the user's settings stay as they were";
  EXPECT_FALSE(std::filesystem::exists(Root().File("data/tavrinsonic")))
      << "nothing was installed for the user";
}

// The limit counts what the device played, the silence it primes its
// buffers with included (up to about two seconds at this rate), so the
// track is longer than the limit and the limit longer than that silence.
TEST_F(RenderTest, TheLimitCutsTheAudioAndTheEqualizerOptionsReachTheFilters) {
  const std::string track = WriteTrack("long.wav", Track(0, 8 * kRate));
  const std::string plain = Root().File("home/plain.wav");
  const std::string filtered = Root().File("home/filtered.wav");
  ASSERT_EQ(Render("--seconds 4 --equalizer off " + track + " " + plain).status, 0);
  ASSERT_EQ(Render("--seconds 4 --equalizer on --eq 27,27,0,0,14,14,14,0,27,14,14 --extra-bass 4 " + track +
                   " " + filtered)
                .status,
            0);
  const Samples plainSamples = ReadOutput(plain);
  const Samples filteredSamples = ReadOutput(filtered);
  EXPECT_EQ(plainSamples.size(), 8u * kRate);
  EXPECT_EQ(filteredSamples.size(), 8u * kRate);
  const std::vector<Samples> plainSound = SoundingStretches(plainSamples);
  const std::vector<Samples> filteredSound = SoundingStretches(filteredSamples);
  ASSERT_FALSE(plainSound.empty());
  ASSERT_FALSE(filteredSound.empty());
  // Compared over the length both have: the cut may fall apart.
  const std::size_t common = std::min(plainSound.front().size(), filteredSound.front().size());
  ASSERT_GT(common, 0u);
  EXPECT_FALSE(std::equal(plainSound.front().begin(),
                          plainSound.front().begin() + static_cast<std::ptrdiff_t>(common),
                          filteredSound.front().begin()));
}

TEST_F(RenderTest, TheCommandLineIsCheckedAndDocumented) {
  const ToolRun help = Render("--help");
  EXPECT_EQ(help.status, 0);
  for (const char* option :
       {"--crossfade", "--gapless", "--trim-silence", "--equalizer", "--eq", "--extra-bass", "--seconds"})
    EXPECT_NE(help.output.find(option), std::string::npos) << option;
  EXPECT_EQ(Render("--crossfade maybe a.wav b.wav").status, 2);
  EXPECT_EQ(Render("--eq 1,2,3 a.wav b.wav").status, 2);
  EXPECT_EQ(Render("--extra-bass 5 a.wav b.wav").status, 2);
  EXPECT_EQ(Render("only-one.wav").status, 2);
  // A file nothing plays gives an empty recording, not an error.
  const ToolRun dead = Render(Root().File("home/missing.wav") + " " + Root().File("home/empty.wav"));
  EXPECT_EQ(dead.status, 0) << dead.output;
  EXPECT_TRUE(ReadOutput(Root().File("home/empty.wav")).empty());
}

}  // namespace
