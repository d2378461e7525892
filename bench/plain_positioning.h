// The straightforward reading of the estimator's step and of a route that ours are measured
// against: one loop for each sentence, every particle a record, particles sorted, a dense matrix.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/random.h"
#include "positioning/gaussian.h"
#include "positioning/particle_cloud.h"

namespace Bench {

using System::TPointF;
using System::Beacon::Fencing::TMeasurement;
using System::Beacon::Fencing::TParticle;

inline double DistanceBetween(TPointF A, TPointF B) {
  return std::hypot(static_cast<double>(A.X) - B.X, static_cast<double>(A.Y) - B.Y);
}

class TPlainCloud {
 public:
  explicit TPlainCloud(std::size_t ALength, TPointF APlace) : FParticles(ALength, {APlace, 1.0}) {}

  TPointF Step(const std::vector<TMeasurement>& AMeasurements, double ASpread, double AStdDev) {
    Move(ASpread);
    for (const TMeasurement& Measurement : AMeasurements) Weigh(Measurement, AStdDev);
    Normalise();
    std::sort(FParticles.begin(), FParticles.end(), [](const TParticle& A, const TParticle& B) {
      return A.P < B.P;
    });
    const TParticle Best = FParticles.front();
    for (TParticle& Particle : FParticles) Particle = Best;
    return Mean();
  }

 private:
  static constexpr std::size_t WideParticles = 50;

  void Move(double ASpread) {
    for (std::size_t I = 0; I < FParticles.size(); ++I) {
      const double U1 = FRandom.NextDouble(), U2 = FRandom.NextDouble();
      const double Spread = I + WideParticles < FParticles.size() ? ASpread : 2.0 * ASpread;
      const double Radius = std::sqrt(-2.0 * std::log10(U1));
      const double Angle = 2.0 * std::numbers::pi * U2;
      TPointF& Position = FParticles[I].Position;
      Position.X = static_cast<float>(Position.X + Radius * std::sin(Angle) * Spread);
      Position.Y = static_cast<float>(Position.Y + Radius * std::cos(Angle) * Spread);
    }
  }
  void Weigh(const TMeasurement& AMeasurement, double AStdDev) {
    const double Spread = AMeasurement.Distance * AStdDev;
    const System::Beacon::Fencing::TGaussian Error(0.0, Spread * Spread);
    for (TParticle& Particle : FParticles) {
      const double Distance = DistanceBetween(AMeasurement.Position, Particle.Position);
      Particle.P *= Error.CumulativeDistribution(-std::abs(Distance - AMeasurement.Distance) / 100);
    }
  }
  void Normalise() {
    double Sum = 0.0;
    for (const TParticle& Particle : FParticles) Sum += Particle.P;
    if (Sum == 0.0) return;
    for (TParticle& Particle : FParticles) Particle.P = Sum / Particle.P;
  }
  TPointF Mean() const {
    double X = 0.0, Y = 0.0;
    for (const TParticle& Particle : FParticles) {
      X += Particle.Position.X;
      Y += Particle.Position.Y;
    }
    const auto Count = static_cast<double>(FParticles.size());
    return {static_cast<float>(X / Count), static_cast<float>(Y / Count)};
  }

  std::vector<TParticle> FParticles;
  System::TRandomStream FRandom{1};
};

/// Dijkstra's search over a dense matrix; the predecessors of all nodes.
class TPlainRoutes {
 public:
  TPlainRoutes(std::size_t ACount, const std::vector<std::tuple<int, int, double>>& ALinks)
      : FWeights(ACount, std::vector<double>(ACount, 0.0)) {
    for (const auto& [A, B, Weight] : ALinks) FWeights[A][B] = FWeights[B][A] = Weight;
  }

  std::vector<int> Search(int AStart, int ATarget) const {
    constexpr double Unreached = 2147483647.0;
    const std::size_t Count = FWeights.size();
    std::vector<double> Distances(Count, Unreached);
    std::vector<bool> Done(Count, false);
    std::vector<int> Predecessors(Count, -1);
    Distances[AStart] = 0.0;
    while (true) {
      int Next = -1;
      double Smallest = Unreached;
      for (std::size_t I = 0; I < Count; ++I)
        if (!Done[I] && Distances[I] < Smallest) {
          Smallest = Distances[I];
          Next = static_cast<int>(I);
        }
      if (Next < 0 || Next == ATarget) return Predecessors;
      Done[Next] = true;
      for (std::size_t I = 0; I < Count; ++I)
        if (FWeights[Next][I] != 0.0 && !Done[I] && Smallest + FWeights[Next][I] < Distances[I]) {
          Distances[I] = Smallest + FWeights[Next][I];
          Predecessors[I] = Next;
        }
    }
  }

 private:
  std::vector<std::vector<double>> FWeights;
};

}  // namespace Bench
