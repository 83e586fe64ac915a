#pragma once
#include <string>

#include <nlohmann/json.hpp>

#include "run/Param.h"

// The run summary that `run` writes beside the result file; null when the file
// is missing, and null with `note` set when it is not readable JSON.
nlohmann::json ReadRunSummary(const std::string& path, std::string& note);

// HTML tables of the summary's stages (counts and times, known keys by name,
// unknown ones as written).
std::string SummaryTablesHtml(const nlohmann::json& summary);

// HTML table of the settings the run used.
std::string SettingsHtml(const CConstructionParam* construction, const CSearchParam& search);

// Text with &, <, >, " and ' replaced by entities.
std::string EscapeHtml(const std::string& text);
