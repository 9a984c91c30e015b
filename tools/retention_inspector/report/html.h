// Writes parts of a report as HTML. Every text is escaped.
// SPDX-License-Identifier: MIT
#pragma once

#include "tools/retention_inspector/report/report.h"

/// A self-contained page: style and script are in it, and nothing else may be loaded. It works without
/// script, too. `body` is HTML, made of the parts below.
QByteArray htmlPage(const QString& title, const QString& body);

QString htmlHeading(const QString& words);
QString htmlParagraph(const QString& words);
/// Names and values; facts without a title are left out.
QString htmlFacts(const std::vector<Fact>& facts);
/// The columns that have a title; empty without rows. `id` may be null.
QString htmlTable(const Table& table, const char* id = nullptr);
QString htmlFindings(const std::vector<Finding>& findings);
QString htmlNotes(const QStringList& notes);
/// A field that filters the table `id` for rows that contain all words typed. Hidden without script.
QString htmlFilter(const char* id);
