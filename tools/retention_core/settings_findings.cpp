// Finds what is wrong with the retention settings as a whole.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/findings.h"

#include <utility>

namespace {

const auto error = Finding::Severity::Error;
const auto warning = Finding::Severity::Warning;

void checkSaveTime(const ProjectSettings& settings, std::vector<Finding>& findings)
{
    const int minutes = settings.saveTimeMinutes;
    const quint32 configured = settings.saveTime.value_or(1);
    QString problem = QStringLiteral("%1 gives %2 minutes, because the module uses only the low 16 bits")
                          .arg(configured)
                          .arg(minutes);
    const char* kind = "save-time-wrapped";
    if (minutes == 0) {
        kind = "save-time-zero";
        problem =
            QStringLiteral(
                "%1 gives a period of 0 minutes; depending on the panel, it then saves continuously or never")
                .arg(configured);
    } else if (minutes < 0) {
        kind = "save-time-negative";
        problem += QLatin1String(" as a signed number; the panel may then never save");
    } else if (configured <= 32767) {
        return;
    }
    findings.push_back(
        {error, kind, QStringLiteral("\"Save Time\""), problem + QLatin1Char('.'),
         QStringLiteral(
             "Set \"Save Time\" to the number of minutes between saves, from 1 to 32767 (default: 5).")});
}

} // namespace

std::vector<Finding> settingsFindings(const ProjectSettings& settings)
{
    const QString retention = QStringLiteral("\"DataRetention\"");
    std::vector<Finding> findings;
    if (settings.retentionObjects == 0)
        findings.push_back({error, "nothing-retained", QStringLiteral("project"),
                            QStringLiteral("there is no \"DataRetention\" object, so nothing is retained."),
                            QStringLiteral("Add a \"DataRetention\" object with \"open Save all\" set to 1, "
                                           "or with an entry for each range to retain.")});
    else if (settings.mode == RetentionMode::None)
        findings.push_back(
            {error, "nothing-retained", retention,
             QStringLiteral("\"open Save all\" is 0 and there are no entries, so nothing is retained."),
             QStringLiteral("Add an entry for each range to retain, or set \"open Save all\" to 1.")});
    if (settings.retentionObjects > 1)
        findings.push_back(
            {error, "second-retention-object", QStringLiteral("project"),
             QStringLiteral("there are %1 \"DataRetention\" objects; the module reads only the first.")
                 .arg(settings.retentionObjects),
             QStringLiteral("Move all settings and entries into the first one.")});
    if (settings.mode == RetentionMode::WholeAreas) {
        checkSaveTime(settings, findings);
        const auto entries = static_cast<qint64>(settings.entries.size());
        if (entries > 0)
            findings.push_back(
                {warning, "entries-without-effect", retention,
                 QStringLiteral("\"open Save all\" is set, so the %1 %2 no effect.")
                     .arg(entries)
                     .arg(QLatin1String(entries == 1 ? "entry has" : "entries have")),
                 QStringLiteral(
                     "Remove the entries, or set \"open Save all\" to 0 to retain only their cells.")});
    }
    return findings;
}

QString projectNote(const Layout& layout, const char* name)
{
    const auto count = qint64(projectFindings(layout).size());
    return count == 0 ? QString()
                      : QStringLiteral("%1 itself has %2; run \"layout\" to see %3.")
                            .arg(QLatin1String(name), countText(count, "finding"),
                                 QLatin1String(count == 1 ? "it" : "them"));
}

std::vector<Finding> projectFindings(const Layout& layout)
{
    std::vector<Finding> findings = settingsFindings(layout.settings);
    for (Finding& finding : entryFindings(layout))
        findings.push_back(std::move(finding));
    for (Finding& finding : propertyFindings(layout.settings))
        findings.push_back(std::move(finding));
    return findings;
}
