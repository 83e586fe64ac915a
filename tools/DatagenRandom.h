#pragma once
#include <cmath>
#include <cstdint>
#include <random>

// Random numbers that come out the same on every standard library: the engine
// and std::seed_seq are fully specified, while the std:: distributions are not,
// so the distributions are written out here.
class CDatagenRandom {
 public:
  // One independent stream per (seed, stream, index), so that adding spectra of
  // one kind never changes the numbers drawn for another.
  CDatagenRandom(uint32_t seed, uint32_t stream, uint32_t index) {
    std::seed_seq sequence{seed, stream, index, 0x51u};
    engine_.seed(sequence);
  }

  // Uniform in the open interval (0, 1).
  double Uniform() { return (static_cast<double>(engine_()) + 0.5) / 4294967296.0; }
  double Uniform(double low, double high) { return low + (high - low) * Uniform(); }

  // Uniform integer from low to high, both included.
  int Int(int low, int high) {
    if (high <= low) return low;
    auto span = static_cast<uint64_t>(high - low) + 1;
    return low + static_cast<int>(static_cast<uint64_t>(engine_()) * span >> 32);
  }

  bool Chance(double probability) { return Uniform() < probability; }

  // Box-Muller; one value per call, no cached second value.
  double Normal(double mean, double sd) {
    double u1 = Uniform();
    double u2 = Uniform();
    return mean + sd * std::sqrt(-2.0 * std::log(u1)) * std::cos(6.283185307179586 * u2);
  }

  double LogNormal(double sigma) { return std::exp(Normal(0.0, sigma)); }
  double Exponential(double mean) { return -mean * std::log(Uniform()); }

  template <class Vector>
  void Shuffle(Vector& items) {
    for (std::size_t i = items.size(); i > 1; --i) {
      std::size_t j = static_cast<std::size_t>(Int(0, static_cast<int>(i) - 1));
      std::swap(items[i - 1], items[j]);
    }
  }

 private:
  std::mt19937 engine_;
};
