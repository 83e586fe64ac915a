#include "construction/FollowingResidues.h"

#include "idlist/SpecListIO.h"
#include "molecule/ProteinDatabase.h"
#include "run/Process.h"

void CFollowingResidues::Install(const std::string& fastaPath) {
  CProteinDatabase database;
  database.path = fastaPath;
  // Without the proteins the key can't do what it promises: the run stops
  // rather than build a library that silently lacks the sites it asked for.
  if (!database.Load()) ExitProgram(1);
  locator_ = std::make_unique<CPeptideLocator>(database.proteins);
  counts.used = true;
  ResiduesAfterSource() = [this](const std::string& sequence, std::string& after) {
    return Lookup(sequence, after);
  };
}

CFollowingResidues::~CFollowingResidues() {
  if (locator_) ResiduesAfterSource() = nullptr;
}

bool CFollowingResidues::Lookup(const std::string& sequence, std::string& after) {
  auto known = answers_.find(sequence);
  if (known == answers_.end()) {
    std::string found;
    switch (locator_->ResiduesAfter(sequence, found)) {
      case CPeptideLocator::Outcome::Unique: ++counts.placed; break;
      case CPeptideLocator::Outcome::Differing: ++counts.differing; break;
      case CPeptideLocator::Outcome::Missing: ++counts.missing; break;
    }
    known = answers_.emplace(sequence, found).first;
  }
  if (known->second.empty()) return false;
  after = known->second;
  return true;
}
