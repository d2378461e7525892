// A message bus of the test's own, in place of the system bus.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
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

  /// Returns when the bus takes connections. It ends with this thread at the latest.
  void Start() {
    FOutput = popen(("exec setpriv --pdeathsig KILL dbus-daemon --session --nofork "
                     "--print-address=1 --print-pid=1 2>/dev/null --address=" +
                     GetAddress())
                        .c_str(),
                    "re");
    if (std::fscanf(FOutput, "%*s %d", &FProcess) != 1) Stop();  // printed when it is ready
  }

  void Stop() {
    if (FProcess > 0) kill(FProcess, SIGKILL);
    if (FOutput) pclose(FOutput);
    FOutput = nullptr;
    FProcess = -1;
  }

 private:
  std::filesystem::path FFolder;
  std::FILE* FOutput = nullptr;
  pid_t FProcess = -1;
};

}  // namespace System::Beacon
