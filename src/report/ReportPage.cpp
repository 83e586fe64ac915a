#include "report/ReportPage.h"

#include "report/RunSummary.h"

std::string JsonForScript(const std::string& json) {
  std::string out;
  out.reserve(json.size());
  for (char c : json) {
    if (c == '<') out += "\\u003c";  // only inside strings in JSON, where the escape means the same
    else out += c;
  }
  return out;
}

void WriteReportPage(const CReportPage& page, std::ostream& out) {
  out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      << "<title>" << EscapeHtml(page.title) << "</title>\n<style>\n"
      << kReportStyle << "</style>\n</head>\n<body>\n"
      << "<header><h1>" << EscapeHtml(page.title) << "</h1>\n" << page.introHtml << "</header>\n"
      << "<nav><a href=\"#summary\">Summary</a> <a href=\"#figures\">Scores and FDR</a> "
      << "<a href=\"#hits\">Hits</a></nav>\n"
      << page.notesHtml
      << "<section id=\"summary\"><h2>Summary</h2>\n<div class=\"tables\">\n"
      << page.countsHtml << page.summaryHtml << "</div>\n"
      << "<details><summary>Settings used</summary><div class=\"tables\">\n"
      << page.settingsHtml << "</div></details>\n</section>\n"
      << "<section id=\"figures\"><h2>Scores and FDR</h2>\n<div class=\"figures\">"
      << "<figure id=\"histogram\"></figure><figure id=\"fdrcurve\"></figure></div>\n</section>\n"
      << "<section id=\"hit\" hidden></section>\n"
      << "<section id=\"hits\"><h2>Hits</h2>\n<div id=\"hitcontrols\"></div>\n"
      << "<table id=\"hittable\"><thead></thead><tbody></tbody></table>\n<div id=\"pager\"></div>\n"
      << "</section>\n"
      << "<script type=\"application/json\" id=\"report-data\">" << page.dataJson << "</script>\n"
      << "<script type=\"text/plain\" id=\"library-peaks\">\n" << page.libraryLines << "</script>\n"
      << "<script type=\"text/plain\" id=\"hit-peaks\">\n" << page.hitLines << "</script>\n"
      << "<script>\n'use strict';\n(function () {\n" << kScriptBasics << kScriptFigures
      << kScriptHitPanel << kScriptHitTable << "})();\n</script>\n</body>\n</html>\n";
}
