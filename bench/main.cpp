// Runs the benchmarks and prints, for every case that was measured twice, how many times faster
// ours is than the straightforward reading beside it: "CASE/ours" against "CASE/plain".
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

class TRatioReporter final : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& ARuns) override {
    ConsoleReporter::ReportRuns(ARuns);
    for (const Run& One : ARuns)
      if (!One.error_occurred) Keep(One.benchmark_name(), One.GetAdjustedCPUTime());
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nratios (plain / ours, CPU time):\n");
    for (const auto& [Case, Times] : FCases)
      if (Times.Ours > 0.0 && Times.Plain > 0.0)
        std::printf("  %-40s %10.1f\n", Case.c_str(), Times.Plain / Times.Ours);
  }

 private:
  struct TTimes {
    double Ours = 0.0;
    double Plain = 0.0;
  };

  /// "Look-up/ours/10000" belongs to the case "Look-up/10000".
  void Keep(std::string AName, double ATime) {
    for (const bool IsOurs : {true, false}) {
      const std::string Mark = IsOurs ? "/ours" : "/plain";
      const std::size_t At = AName.find(Mark);
      if (At == std::string::npos) continue;
      AName.erase(At, Mark.size());
      (IsOurs ? FCases[AName].Ours : FCases[AName].Plain) = ATime;
      return;
    }
  }

  std::map<std::string, TTimes> FCases;
};

}  // namespace

int main(int ACount, char** AValues) {
  benchmark::Initialize(&ACount, AValues);
  if (benchmark::ReportUnrecognizedArguments(ACount, AValues)) return 1;
  TRatioReporter Reporter;
  benchmark::RunSpecifiedBenchmarks(&Reporter);
  benchmark::Shutdown();
}
