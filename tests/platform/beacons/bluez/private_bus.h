// A message bus of the test's own, in place of the system bus.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace System::Beacon {

/// Runs a dbus-daemon in a folder of its own and makes it the system bus of this process. It can
/// be stopped and started again at the same address.
class TPrivateBus {
 public:
  TPrivateBus() {
    std::string Folder = (std::filesystem::temp_directory_path() / "wayfence-bus-XXXXXX").string();
    FFolder = mkdtemp(Folder.data());
    setenv("DBUS_SYSTEM_BUS_ADDRESS", GetAddress().c_str(), 1);
    Start();
  }
  ~TPrivateBus() {
    Stop();
    std::filesystem::remove_all(FFolder);
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
  }
  TPrivateBus(const TPrivateBus&) = delete;
  TPrivateBus& operator=(const TPrivateBus&) = delete;

  std::string GetAddress() const { return "unix:path=" + (FFolder / "bus").string(); }
  /// False when dbus-daemon is not installed.
  bool IsRunning() const { return FProcess > 0; }

  /// Returns when the bus takes connections.
  void Start() {
    std::array<int, 2> Pipe{};
    ASSERT_EQ(pipe2(Pipe.data(), O_CLOEXEC), 0);
    const std::string Address = "--address=" + GetAddress();
    FProcess = fork();
    if (FProcess == 0) Become(Pipe[1], Address.c_str());
    close(Pipe[1]);
    char Byte = 0;
    const bool HasStarted = read(Pipe[0], &Byte, 1) == 1;  // it prints its address when ready
    close(Pipe[0]);
    if (!HasStarted) Stop();
  }

  void Stop() {
    if (FProcess <= 0) return;
    kill(FProcess, SIGKILL);
    waitpid(FProcess, nullptr, 0);
    FProcess = -1;
  }

 private:
  [[noreturn]] static void Become(int AOutput, const char* AAddress) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(AOutput, STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    execlp("dbus-daemon",
           "dbus-daemon",
           "--session",
           "--nofork",
           "--print-address=1",
           AAddress,
           nullptr);
    _exit(127);
  }

  std::filesystem::path FFolder;
  pid_t FProcess = -1;
};

}  // namespace System::Beacon
