// The program as its users meet it: arguments and files in, text and an exit code out.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/files.h"
#include "platform/hex.h"
#include "support/scripted_source.h"

namespace Wayfence {

struct TOutcome {
  int ExitCode = -1;
  std::string Output;
  std::string Messages;
};

/// Runs the program in a folder of its own.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    if (std::string(WAYFENCE_PROGRAM).empty()) GTEST_SKIP() << "built without the program";
    FFolder = std::filesystem::path(testing::TempDir()) / fmt::format("wayfence-{}", getpid());
    std::filesystem::create_directories(FFolder);
    WriteFiles();
  }
  void TearDown() override {
    if (!FFolder.empty()) std::filesystem::remove_all(FFolder);
  }
  virtual void WriteFiles() = 0;

  std::string Path(const std::string& AName) const { return FFolder / AName; }

  /// Runs "wayfence ARGUMENTS" in the folder, standard output into `AOutput`.
  TOutcome Run(const std::string& AArguments, const std::string& AOutput = "output") const {
    const std::string Command = fmt::format("cd '{}' && {} '{}' {} > {} 2> messages",
                                            FFolder.string(),
                                            FPrelude,
                                            WAYFENCE_PROGRAM,
                                            AArguments,
                                            AOutput);
    const int Status = std::system(Command.c_str());
    TOutcome Result;
    Result.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : -1;
    if (AOutput == "output") Result.Output = System::ReadWholeFile(Path("output"), 1 << 24);
    Result.Messages = System::ReadWholeFile(Path("messages"), 1 << 20);
    return Result;
  }
  /// What a command that must succeed writes.
  std::string OutputOf(const std::string& AArguments) const {
    const TOutcome Outcome = Run(AArguments);
    EXPECT_EQ(Outcome.ExitCode, 0) << AArguments << ": " << Outcome.Messages;
    return Outcome.Output;
  }
  void ExpectRefusal(int AExitCode,
                     const std::string& AArguments,
                     const std::string& AMessage) const {
    const TOutcome Outcome = Run(AArguments);
    EXPECT_EQ(Outcome.ExitCode, AExitCode) << AArguments;
    EXPECT_EQ(Outcome.Output, "") << AArguments;
    EXPECT_TRUE(Outcome.Messages.starts_with(AMessage)) << AArguments << ": " << Outcome.Messages;
  }

  /// A line of a recording.
  static std::string LogLine(double ASeconds,
                             int AAddress,
                             int ARssi,
                             const System::Beacon::TPayload& APayload) {
    return fmt::format(R"({{"t": {}, "address": "C0:00:00:00:00:{:02X}", "rssi": {}, "adv": "{}"}})"
                       "\n",
                       ASeconds,
                       AAddress,
                       ARssi,
                       System::BytesToHex(APayload));
  }

  std::string FPrelude;  // of the shell, before each run

 private:
  std::filesystem::path FFolder;
};

}  // namespace Wayfence
