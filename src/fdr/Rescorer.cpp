#include "fdr/Rescorer.h"

#include <cmath>

namespace {

constexpr int kIterations = 300;
constexpr double kStep = 0.5;
constexpr double kRidge = 1e-3;

struct CModel {
  std::vector<double> mean, scale, weights;  // weights: one per feature, then the bias
  double Predict(const std::vector<double>& row) const {
    double sum = weights.back();
    for (std::size_t j = 0; j < row.size(); ++j) sum += weights[j] * (row[j] - mean[j]) / scale[j];
    return sum;
  }
};

// Class-balanced logistic regression on standardised features, by gradient descent.
CModel Train(const CRescoreInput& in, uint32_t heldOut) {
  const std::size_t d = in.features.empty() ? 0 : in.features[0].size();
  CModel model;
  model.mean.assign(d, 0.0);
  model.scale.assign(d, 0.0);
  model.weights.assign(d + 1, 0.0);
  std::vector<std::size_t> rows;
  double targets = 0.0, decoys = 0.0;
  for (std::size_t i = 0; i < in.features.size(); ++i) {
    if (in.folds[i] == heldOut) continue;
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
  std::vector<double> gradient(d + 1);
  for (int iteration = 0; iteration < kIterations; ++iteration) {
    std::fill(gradient.begin(), gradient.end(), 0.0);
    for (std::size_t i : rows) {
      const double p = 1.0 / (1.0 + std::exp(-model.Predict(in.features[i])));
      const double y = in.decoys[i] ? 0.0 : 1.0;
      const double g = (p - y) * (in.decoys[i] ? decoyWeight : targetWeight);
      for (std::size_t j = 0; j < d; ++j)
        gradient[j] += g * (in.features[i][j] - model.mean[j]) / model.scale[j];
      gradient[d] += g;
    }
    for (std::size_t j = 0; j <= d; ++j)
      model.weights[j] -= kStep * (gradient[j] + (j < d ? kRidge * model.weights[j] : 0.0));
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
      if (input.folds[i] != fold) ++(input.decoys[i] ? decoys : targets);
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
