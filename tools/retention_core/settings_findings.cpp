// Findings about the retention settings as a whole.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/layout_findings.h"

namespace {

Finding finding(Finding::Severity severity, const char* kind, const char* place, const QString& problem,
                const QString& remedy)
{
    Finding result;
    result.severity = severity;
    result.kind = kind;
    result.place = QString::fromLatin1(place);
    result.problem = problem;
    result.remedy = remedy;
    return result;
}

const auto error = Finding::Severity::Error;
const auto warning = Finding::Severity::Warning;

void checkSaveTime(const ProjectSettings& settings, std::vector<Finding>& findings)
{
    const char* const place = "\"Save Time\"";
    const QString remedy =
        QStringLiteral("Set \"Save Time\" to the minutes between two saves, from 1 to 32767; 5 is usual.");
    const int minutes = settings.saveTimeMinutes;
    const QString configured = QString::number(settings.saveTimeSetting);
    if (minutes == 0)
        findings.push_back(finding(error, "save-time-zero", place,
                                   QStringLiteral("%1 means a period of 0 minutes; a panel may then save all "
                                                  "the time or never.")
                                       .arg(configured),
                                   remedy));
    else if (minutes < 0)
        findings.push_back(
            finding(error, "save-time-negative", place,
                    QStringLiteral("%1 means %2 minutes, because only its low 16 bits count, with a sign; a "
                                   "panel may never save.")
                        .arg(configured, QString::number(minutes)),
                    remedy));
    else if (settings.saveTimeSetting > 32767)
        findings.push_back(finding(error, "save-time-wrapped", place,
                                   QStringLiteral("%1 means %2 minutes, because only its low 16 bits count.")
                                       .arg(configured, QString::number(minutes)),
                                   remedy));
}

} // namespace

std::vector<Finding> settingsFindings(const ProjectSettings& settings)
{
    std::vector<Finding> findings;
    if (settings.retentionObjects == 0)
        findings.push_back(
            finding(error, "nothing-retained", "project",
                    QStringLiteral("there is no object \"DataRetention\", so nothing is retained."),
                    QStringLiteral("Add an object \"DataRetention\" with \"open Save all\" 1, or "
                                   "with an entry for each range to keep.")));
    else if (settings.mode == RetentionMode::None)
        findings.push_back(
            finding(error, "nothing-retained", "\"DataRetention\"",
                    QStringLiteral("\"open Save all\" is 0 and there is no entry, so nothing is "
                                   "retained."),
                    QStringLiteral("Add an entry for each range to keep, or set \"open Save all\" "
                                   "to 1.")));
    if (settings.retentionObjects > 1)
        findings.push_back(
            finding(error, "second-retention-object", "project",
                    QStringLiteral("there are %1 objects \"DataRetention\"; only the first counts.")
                        .arg(settings.retentionObjects),
                    QStringLiteral("Move all settings and entries into the first one.")));
    if (settings.mode == RetentionMode::WholeAreas) {
        checkSaveTime(settings, findings);
        if (!settings.entries.empty())
            findings.push_back(
                finding(warning, "entries-without-effect", "\"DataRetention\"",
                        QStringLiteral("\"open Save all\" is set, so its %1 entries have no effect.")
                            .arg(settings.entries.size()),
                        QStringLiteral("Remove the entries, or set \"open Save all\" to 0 to keep "
                                       "only them.")));
    }
    return findings;
}
