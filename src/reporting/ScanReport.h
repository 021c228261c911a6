#pragma once

#include "reporting/JobResults.h"

#include <QString>

// The report of a job: one file per catalogue number and format in the reports folder, in HTML or
// plain text, with the same seven blocks in both: the header, the applications, then the video, audio,
// image, text and external files. Every line ends in CR LF; the text is UTF-8.

enum class ReportFormat { Html, Text };

// The application folder's reports folder.
QString ReportsFolder();
// The report's file: the catalogue number and the format's extension, cleaned of the characters a file
// name cannot hold, in the reports folder.
QString ReportPath(const QString &catalogueNumber, ReportFormat format);
// The plain-text title carries the program's version: "KEVRO v1.00 Full Scan Report".
QString ReportTitle(ReportFormat format);
// The content setting of kevro.ini, read afresh: true when every file is to be listed, false when
// only the checked ones are.
bool ReportContentAll();

// A path below the extract folder as the report shows it: "Archive file: " and the path behind the
// extract folder. The comparison is exact against the upper-case folder, as the scan stores its paths.
QString ChangePathIfCompressed(const QString &path);
// ch once for each character of text.
QString RulerFor(const QString &text, const QString &ch);

// Writes the whole report into path, replacing any file there. The session's catalogue number, client
// name, lists and checked items go into it with the results. A failure raises its VbError and leaves
// what was written so far in the file.
void WriteReportFile(const QString &path, ReportFormat format, const JobResults &results, bool contentAll);

// The summary's Full Report: the reports folder made when missing, the question before an existing
// report is replaced, then WriteReport. Every failure ends in a message box.
void SaveReport(ReportFormat format, const JobResultsSource &results);
// Writes the report with the content setting of kevro.ini and opens it with the desktop's program.
void WriteReport(const QString &path, ReportFormat format, const JobResultsSource &results);
