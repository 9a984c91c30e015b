// Makes one page about a panel for its commissioning folder.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/refusal.h"
#include "tools/retention_inspector/command.h"
#include "tools/retention_inspector/report/html.h"
#include "tools/retention_inspector/report/map_picture.h"
#include "tools/retention_inspector/report/named_values.h"
#include "tools/retention_inspector/report/output_file.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDate>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace {

const std::size_t mostRows = 5000; // a browser still scrolls

QString sha256(QIODevice& device)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    device.seek(0);
    return hash.addData(&device) ? QString::fromLatin1(hash.result().toHex())
                                 : QStringLiteral("cannot be read");
}

QString sha256(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? sha256(file) : QStringLiteral("cannot be read");
}

Report reportOf(const char* command, const Inputs& inputs)
{
    const Command& known = *commandNamed(QLatin1String(command));
    Inputs of = inputs;
    of.options = usualOptions(known);
    for (const Option& option : known.options)
        if (inputs.has(option.name))
            of.options.insert(QLatin1String(option.name), inputs.option(option.name));
    return known.run(of);
}

/// When nothing is known about the flash, only what does not depend on it.
Report wearReport(const Inputs& inputs)
{
    if (inputs.has("medium") || inputs.has("changes-per-hour") || inputs.layout().images())
        return reportOf("wear", inputs);
    Report report;
    report.notes.append(
        QStringLiteral("Not calculated: the page was created without --medium and --changes-per-hour."));
    return report;
}

QString tablesOf(const Report& report)
{
    QString html;
    for (const Table& table : report.tables)
        html += htmlTable(table);
    return html;
}

/// The table of "check" with hashes, after the `named` files: the project and, if any, the tags.
Table fileTable(const Inputs& inputs, const QStringList& named)
{
    Table table = reportOf("check", inputs).tables.front();
    table.columns.push_back({"sha256", "SHA-256"});
    for (std::size_t i = 0; i < areaCount; ++i) {
        const RetentionFile& file = inputs.files.front()[i];
        const bool readable = file.state == RetentionFile::State::Readable;
        table.rows[i].push_back(readable ? sha256(*file.device) : QString());
    }
    std::vector<std::vector<Value>> rows;
    for (const QString& path : named)
        rows.push_back(
            {QFileInfo(path).fileName(), QFileInfo(path).size(), Value(), Value(), Value(), sha256(path)});
    table.rows.insert(table.rows.begin(), rows.begin(), rows.end());
    return table;
}

/// The named values, and those of the others that are not 0.
Table valueTable(const Layout& layout, const AreaReadings& readings, const Tags& tags, Report& report)
{
    Table table = namedValues();
    for (const AreaReading& reading : readings)
        addNamedValues(layout, reading, tags, layout.of(*reading.values.area).kept, true, table,
                       report.findings);
    const auto isUnnamedZero = [&](const std::vector<Value>& row) {
        const AreaFacts* const area = areaNamed(row[0].text);
        return row[3].text == QLatin1String("0") && !tags.of(*area, row[1].text.toInt());
    };
    const auto zeros = std::remove_if(table.rows.begin(), table.rows.end(), isUnnamedZero);
    const auto leftOut = table.rows.end() - zeros;
    table.rows.erase(zeros, table.rows.end());
    if (leftOut > 0)
        report.notes.append(QStringLiteral("%1 with the value 0 and no tag %2 not listed.")
                                .arg(countText(leftOut, "cell"), QLatin1String(leftOut == 1 ? "is" : "are")));
    if (table.rows.size() > mostRows) {
        report.notes.append(
            QStringLiteral("Only the first %1 of %2 values are listed; \"export\" writes them all.")
                .arg(mostRows)
                .arg(table.rows.size()));
        table.rows.resize(mostRows);
    }
    return table;
}

QString mapHtml(const Layout& layout)
{
    const QString svg = QString::fromUtf8(mapPicture(layout, wordsOf(layout.settings.mode).text));
    return QLatin1String("<div class=\"map\">") + svg.mid(svg.indexOf(QLatin1String("<svg"))) +
           QLatin1String("</div>\n");
}

Report run(const Inputs& inputs)
{
    const Layout& layout = inputs.layout();
    const RetentionFiles& files = inputs.files.front();
    const QString project = inputs.projects.front().path;
    const QString date =
        inputs.has("date") ? inputs.option("date") : QDate::currentDate().toString(Qt::ISODate);
    const QString title =
        inputs.has("title") ? inputs.option("title") : QFileInfo(project).completeBaseName();
    const Tags tags = tagsOf(inputs).value_or(Tags());
    const AreaReadings readings = readAreas(layout, files);
    const Report layoutReport = reportOf("layout", inputs);
    const Report wear = wearReport(inputs);

    Report report;
    report.facts = {{"mode", "Mode", layout.settings.mode}, {"date", "Date", date}};
    report.findings = layoutReport.findings;
    for (Finding& finding : findingsOf(readings))
        report.findings.push_back(std::move(finding));
    addTagRemarks(layout, tags, report);
    Table values = valueTable(layout, readings, tags, report);
    const auto isProjects = [&](const Finding& finding) {
        return std::any_of(layoutReport.findings.begin(), layoutReport.findings.end(),
                           [&](const Finding& other) {
                               return other.place == finding.place && other.problem == finding.problem;
                           });
    };
    std::copy_if(wear.findings.begin(), wear.findings.end(), std::back_inserter(report.findings),
                 [&](const Finding& finding) { return !isProjects(finding); });

    std::vector<Fact> identity = layoutReport.facts;
    identity.insert(identity.begin(), {{nullptr, "Project", project},
                                       {nullptr, "Panel's files", QFileInfo(files.front().path).path()},
                                       {nullptr, "Date", date}});
    QStringList named = {project, inputs.option("tags")};
    if (!inputs.has("tags") || named.last() == QLatin1String("-"))
        named.removeLast();
    Table fileRows = fileTable(inputs, named);
    QString body = QStringLiteral("<h1>%1</h1>\n"
                                  "<p class=\"soft\">Values retained across power loss</p>\n")
                       .arg(title.toHtmlEscaped());
    body += htmlHeading(QStringLiteral("Identification")) + htmlFacts(identity) + htmlTable(fileRows);
    body += htmlHeading(QStringLiteral("Findings")) + htmlFindings(report.findings);
    body += htmlHeading(QStringLiteral("Map of the files")) + mapHtml(layout);
    body += htmlHeading(QStringLiteral("What is retained")) + tablesOf(layoutReport);
    body += htmlHeading(QStringLiteral("Values"));
    body += values.rows.empty() ? htmlParagraph(QStringLiteral("No cell has a name or a value other than 0."))
                                : htmlFilter("values") + htmlTable(values, "values");
    body += htmlNotes(report.notes);
    body += htmlHeading(QStringLiteral("Flash wear")) + htmlFacts(wear.facts) + tablesOf(wear) +
            htmlNotes(wear.notes);
    deliver(htmlPage(title, body), inputs.option("output"), inputs.has("force"), report);
    report.facts.push_back({"output", "Written to", placeText(inputs.option("output"))});
    report.tables = {std::move(fileRows)};
    return report;
}

} // namespace

extern const Command reportCommand = {
    "report",
    {{"PROJECT.xml", Argument::Kind::Project}, {"DIR", Argument::Kind::FilesAsFound}},
    "a one-page report on a panel, for the commissioning documents",
    "Creates one self-contained HTML page: the files with their SHA-256, findings, a map, the entries, the\n"
    "values (by name with --tags) and the flash wear. It prints well and can be read without a network or "
    "scripts.",
    "project.xml /usr/tavrin/project --tags tags.csv --medium emmc --output panel.html",
    {{"output", "FILE.html", "File to create; - for standard output", nullptr, Option::Kind::Required},
     {"tags", "TAGS.csv", "Names, types and units of values"},
     {"title", "TEXT", "Title of the page (default: the name of the project file)"},
     {"date", "TEXT", "Date on the page (default: today)"},
     {"medium", "KIND", "Kind of flash, as for \"wear\": sd, emmc, nor or nand"},
     {"changes-per-hour", "N", "Changes of retained cells per hour, as for \"wear\""},
     {"force", nullptr, "Replace an existing file"}},
    run};
