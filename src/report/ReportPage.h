#pragma once
#include <ostream>
#include <string>

// The parts of the report page that the program fills in; the page adds its
// style and script, so that the file needs nothing beside it.
struct CReportPage {
  std::string title;
  std::string introHtml;     // what was reported, and when
  std::string notesHtml;     // problems met while reading the run's files
  std::string countsHtml;    // counts computed from the files
  std::string summaryHtml;   // the run summary's tables, if any
  std::string settingsHtml;
  std::string dataJson;      // hits and figures, as JSON safe inside a script element
  std::string libraryLines;  // one library entry per line (PlotText.h)
  std::string hitLines;      // one hit per line, in the order of the hits in dataJson
};

void WriteReportPage(const CReportPage& page, std::ostream& out);

// JSON text that can stand inside a script element: every '<' written as \u003c.
std::string JsonForScript(const std::string& json);

// The page's style sheet, and its script in four parts that share one scope
// (WriteReportPage puts them in one function, in this order).
extern const char* const kReportStyle;
extern const char* const kScriptBasics;
extern const char* const kScriptFigures;
extern const char* const kScriptHitPanel;
extern const char* const kScriptHitTable;
