#pragma once
#include <functional>
#include <string>
#include <vector>

#include "idlist/PeptideIdentity.h"
#include "run/Param.h"

// Reader of one identification list. Readers only append to the shared list,
// and each record passes through AddIdentified.
class CSpecListIO {
 public:
  virtual ~CSpecListIO() = default;
  virtual void Init(const CIdentificationFile& file) = 0;
  virtual void Read(std::vector<CIdentifiedSpectrum>& list) { (void)list; }
  virtual void Write(const std::vector<CIdentifiedSpectrum>& list) { (void)list; }

  std::string path;
  int32_t format = 0;

 protected:
  CIdentifiedSpectrum record;  // filled afresh for each entry of the file
};

// New reader for a format code, or nullptr for a code without a reader (3, 5, others).
CSpecListIO* CreateSpecListIO(int32_t format);

// "null" -> "-"; "<pos>,<anything>(<name>);" -> "<pos>,<name>;".
void NormalizeParenMods(std::string& text);

// Whether a residue of the peptide carries the mark `removed`.
bool CarriesSiteMark(const CIdentifiedSpectrum& record, const std::string& removed);

// Marks the sequon asparagines that carry modification_remove as J and records
// the sites; false if none. `residuesAfter` is "00" when unknown.
bool MarkGlycosites(CIdentifiedSpectrum& record, const std::string& residuesAfter);

// Where the residues behind a peptide come from for lists that don't give them
// (motifs_across_cleavage = yes): the lookup fills the two residues and returns
// true, or returns false to leave the record as its list gave it. Empty: no
// lookup, every such list passes "00".
using ResiduesAfterLookup = std::function<bool(const std::string& sequence, std::string& residuesAfter)>;
ResiduesAfterLookup& ResiduesAfterSource();

// Appends a copy of the record, as MarkGlycosites left it, if it has a marked site.
// A record of a list that passes "00" and carries the site mark first gets its
// residues after from ResiduesAfterSource, when one is set.
void AddIdentified(std::vector<CIdentifiedSpectrum>& list, CIdentifiedSpectrum& record,
                   const std::string& residuesAfter);
