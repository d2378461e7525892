// Positions of the estimator against those that particle_filter_reference.py worked out.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/files.h"
#include "platform/simulation.h"
#include "support/estimator.h"

namespace System::Beacon::Fencing {
namespace {

const std::string Reference = WAYFENCE_SOURCE_DIR "/tests/positioning/particle_filter_reference";

/// The numbers that the script draws.
struct TReferenceRandom {
  std::uint64_t State;
  int Zero;
  int Count = 0;

  double operator()() {
    State = State * 6364136223846793005U + 1442695040888963407U;
    return Count++ == Zero ? 0.0 : static_cast<double>(State >> 11U) * 0x1p-53;
  }
};

/// The numbers of a line.
struct TNumbers : std::vector<double> {
  explicit TNumbers(std::istream& AWords) {
    for (double Number = 0; AWords >> Number;) push_back(Number);
  }
  int Integer(std::size_t AIndex) const { return static_cast<int>(at(AIndex)); }
  float Float(std::size_t AIndex) const { return static_cast<float>(at(AIndex)); }
  TPointF Point(std::size_t AIndex) const { return {Float(AIndex), Float(AIndex + 1)}; }
};

/// Plays one scenario, line by line; the script tells what the lines mean.
class TScenario {
 public:
  void Play(const std::string& ACommand, const TNumbers& N) {
    if (ACommand == "map") {
      FMap = {N.Float(0), N.Float(1), N.Float(2), N.Float(3)};
      FRandom = {static_cast<std::uint64_t>(N.Integer(4)), N.Integer(5)};
    } else if (ACommand == "beacons") {
      for (std::size_t I = 0; I < N.size(); I += 5) {
        FDesigns.push_back(NewFakeDesignBeacon(TestGUID, 0, N.Point(I + 2)));
        FDesigns.back()->Displacement = N.Point(I);
        FDesigns.back()->UseToPositioning = N.Integer(I + 4) != 0;
      }
    } else if (ACommand == "segment") {
      FPaths.Append({N.Point(0), N.Point(2)});
    } else if (ACommand == "options") {
      SetOptions(N);
    } else if (ACommand == "stepping") {
      FCalculator->SetStepping(N.Integer(0));
    } else if (ACommand == "report") {
      FCalculator->SetEstimatedPosition(N.Point(0));
    } else if (ACommand == "wait") {
      Sleep(N.Integer(0));
    } else if (ACommand == "step") {
      Step(N);
    } else {
      ASSERT_EQ(FEstimates.size(), ACommand == "none" ? 0U : 2U);
      if (ACommand == "is") ExpectEstimate(N);
    }
  }

 private:
  void SetOptions(const TNumbers& N) {
    TEstimatorOptions Options(N.Integer(0), N.Integer(3));
    Options.SetMovementStDeviation(N.Integer(1));
    Options.SetSignalRelativeStdDev(N.Float(2));
    FParticlesNumber = static_cast<std::size_t>(N.Integer(0));
    if (FCalculator) return FCalculator->ApplyOptions(Options);
    FCalculator.emplace(Options, FMap, FPaths, FRandom);
    FCalculator->SetOnEstimatingPosition([this](const TPointF& ARaw, const TPointF& AReported) {
      FEstimates = {ARaw, AReported};
    });
  }

  void Step(const TNumbers& N) {
    TFencingBeacons List, Nearest;
    for (std::size_t I = 1; I < N.size(); I += 2) {
      TFencingBeacon Beacon = NewFencingBeacon(N.Integer(I), {}, N.at(I + 1));
      Beacon.DesignBeacon = FDesigns.at(static_cast<std::size_t>(N.Integer(I)));
      if (N.at(I + 1) == -9.0) Beacon.BTBeacon = nullptr;
      (static_cast<int>(List.GetLength()) < N.Integer(0) ? List : Nearest).Append(Beacon);
    }
    FEstimates.clear();
    EXPECT_TRUE(FCalculator->Calculate(List, Nearest));
  }

  void ExpectEstimate(const TNumbers& N) {
    ExpectNear(FEstimates[0], N.Point(0), "raw");
    ExpectNear(FEstimates[1], N.Point(2), "reported");
    const std::vector<TParticle> Particles = FCalculator->GetParticles();
    ASSERT_EQ(Particles.size(), FParticlesNumber);
    for (const TParticle& Particle : Particles) {
      ExpectNear(Particle.Position, N.Point(4), "particle");
      EXPECT_NEAR(Particle.P, N.at(6), 1E-9 * N.at(6));
    }
  }
  static void ExpectNear(TPointF AActual, TPointF AExpected, const char* AWhat) {
    EXPECT_NEAR(AActual.X, AExpected.X, 1E-3) << AWhat;
    EXPECT_NEAR(AActual.Y, AExpected.Y, 1E-3) << AWhat;
  }

  const TSimulation FSimulation;
  TRectF FMap;
  TReferenceRandom FRandom{};
  std::vector<TRef<TFakeDesignBeacon>> FDesigns;
  TPathSegments FPaths;
  std::size_t FParticlesNumber = 0;
  std::optional<TTrilateration> FCalculator;
  std::vector<TPointF> FEstimates;  // of the last step: nothing, or raw and reported
};

TEST(TTrilateration, EstimatesWhatWasWorkedOut) {
  std::ifstream Text(Reference + ".txt");
  std::unique_ptr<TScenario> Scenario;
  std::string Title;
  int LineNumber = 0;
  for (std::string Line, Command; std::getline(Text, Line) && !HasFailure();) {
    ++LineNumber;
    std::istringstream Words(Line);
    Words >> Command;
    if (Command == "scenario") {
      Title = Line;
      Scenario.reset();
      Scenario = std::make_unique<TScenario>();
    } else {
      SCOPED_TRACE(testing::Message() << Title << ", line " << LineNumber);
      Scenario->Play(Command, TNumbers(Words));
    }
  }
  EXPECT_GT(LineNumber, 200);
}

TEST(TTrilateration, IsComparedWithWhatTheScriptWrites) {
  if (std::system("command -v python3 >/dev/null") != 0) GTEST_SKIP() << "there is no python3";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> Pipe(
      popen(("python3 '" + Reference + ".py'").c_str(), "r"), &pclose);
  std::string Written;
  for (int Letter = 0; (Letter = std::fgetc(Pipe.get())) != EOF;)
    Written += static_cast<char>(Letter);
  EXPECT_TRUE(Written == ReadWholeFile(Reference + ".txt", 1 << 20)) << "see what changed";
}

}  // namespace
}  // namespace System::Beacon::Fencing
