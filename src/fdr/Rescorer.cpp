#include "fdr/Rescorer.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kIterations = 25;
constexpr double kConverged = 1e-8;
constexpr double kRidge = 1e-3;

struct CModel {
  std::vector<double> mean, scale, weights;  // weights: one per feature, then the bias
  double Predict(const std::vector<double>& row) const {
    double sum = weights.back();
    for (std::size_t j = 0; j < row.size(); ++j) sum += weights[j] * (row[j] - mean[j]) / scale[j];
    return sum;
  }
};

// Solves a * x = b for a symmetric positive definite n x n matrix (row-major)
// by Gaussian elimination with partial pivoting; a singular system gives 0.
std::vector<double> Solve(std::vector<double> a, std::vector<double> b, std::size_t n) {
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c + 1; r < n; ++r)
      if (std::fabs(a[r * n + c]) > std::fabs(a[pivot * n + c])) pivot = r;
    if (!(std::fabs(a[pivot * n + c]) > 1e-300)) return std::vector<double>(n, 0.0);
    for (std::size_t k = 0; k < n; ++k) std::swap(a[c * n + k], a[pivot * n + k]);
    std::swap(b[c], b[pivot]);
    for (std::size_t r = c + 1; r < n; ++r) {
      const double f = a[r * n + c] / a[c * n + c];
      for (std::size_t k = c; k < n; ++k) a[r * n + k] -= f * a[c * n + k];
      b[r] -= f * b[c];
    }
  }
  std::vector<double> x(n);
  for (std::size_t c = n; c-- > 0;) {
    double sum = b[c];
    for (std::size_t k = c + 1; k < n; ++k) sum -= a[c * n + k] * x[k];
    x[c] = sum / a[c * n + c];
  }
  return x;
}

// Class-balanced logistic regression on standardised features, by Newton's method.
CModel Train(const CRescoreInput& in, uint32_t heldOut) {
  const std::size_t d = in.features.empty() ? 0 : in.features[0].size();
  CModel model;
  model.mean.assign(d, 0.0);
  model.scale.assign(d, 0.0);
  model.weights.assign(d + 1, 0.0);
  std::vector<std::size_t> rows;
  double targets = 0.0, decoys = 0.0;
  for (std::size_t i = 0; i < in.features.size(); ++i) {
    if (in.folds[i] == heldOut || (!in.scoredOnly.empty() && in.scoredOnly[i])) continue;
    rows.push_back(i);
    (in.decoys[i] ? decoys : targets) += 1.0;
    for (std::size_t j = 0; j < d; ++j) model.mean[j] += in.features[i][j];
  }
  for (double& m : model.mean) m /= static_cast<double>(rows.size());
  for (std::size_t i : rows)
    for (std::size_t j = 0; j < d; ++j) {
      const double v = in.features[i][j] - model.mean[j];
      model.scale[j] += v * v;
    }
  for (double& s : model.scale) {
    s = std::sqrt(s / static_cast<double>(rows.size()));
    if (!(s > 1e-12)) s = 1.0;  // a constant feature carries no weight anyway
  }
  const double targetWeight = 0.5 / targets, decoyWeight = 0.5 / decoys;
  // Newton's method: few passes over the rows, each solving a small system.
  const std::size_t n = d + 1;
  std::vector<double> x(n), gradient(n), hessian(n * n);
  for (int iteration = 0; iteration < kIterations; ++iteration) {
    std::fill(gradient.begin(), gradient.end(), 0.0);
    std::fill(hessian.begin(), hessian.end(), 0.0);
    for (std::size_t i : rows) {
      for (std::size_t j = 0; j < d; ++j)
        x[j] = (in.features[i][j] - model.mean[j]) / model.scale[j];
      x[d] = 1.0;
      const double p = 1.0 / (1.0 + std::exp(-model.Predict(in.features[i])));
      const double weight = in.decoys[i] ? decoyWeight : targetWeight;
      const double g = (p - (in.decoys[i] ? 0.0 : 1.0)) * weight;
      const double h = std::max(p * (1.0 - p), 1e-12) * weight;
      for (std::size_t j = 0; j < n; ++j) {
        gradient[j] += g * x[j];
        for (std::size_t k = 0; k <= j; ++k) hessian[j * n + k] += h * x[j] * x[k];
      }
    }
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t k = 0; k < j; ++k) hessian[k * n + j] = hessian[j * n + k];
      if (j < d) {
        gradient[j] += kRidge * model.weights[j];
        hessian[j * n + j] += kRidge;
      }
    }
    const std::vector<double> step = Solve(hessian, gradient, n);
    double largest = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
      model.weights[j] -= step[j];
      largest = std::max(largest, std::fabs(step[j]));
    }
    if (!(largest > kConverged)) break;
  }
  return model;
}

}  // namespace

std::vector<double> CrossValidatedScores(const CRescoreInput& input,
                                         const std::vector<double>& fallback, bool& learned) {
  learned = false;
  for (uint32_t fold = 0; fold < input.foldCount; ++fold) {
    std::size_t targets = 0, decoys = 0;
    for (std::size_t i = 0; i < input.decoys.size(); ++i)
      if (input.folds[i] != fold && (input.scoredOnly.empty() || !input.scoredOnly[i]))
        ++(input.decoys[i] ? decoys : targets);
    if (targets < kMinimalTrainingClass || decoys < kMinimalTrainingClass) return fallback;
  }
  std::vector<double> scores(input.features.size(), 0.0);
  for (uint32_t fold = 0; fold < input.foldCount; ++fold) {
    const CModel model = Train(input, fold);
    for (std::size_t i = 0; i < input.features.size(); ++i)
      if (input.folds[i] == fold) scores[i] = model.Predict(input.features[i]);
  }
  learned = true;
  return scores;
}
