// Writes the tables, findings and notes of a report as one page for screen, telephone and paper.
// SPDX-License-Identifier: MIT
#include "tools/retention_inspector/report/html.h"

#include <QtCore/QCryptographicHash>

#include <algorithm>

namespace {

const char* const style = R"(
:root{color-scheme:light;--paper:#fff;--ink:#1c1c1c;--soft:#5a5a5a;--line:#d0d0d0;--band:#f4f6f8;--link:#1f5f99;
--error:#b3261e;--warning:#8a5a00}
@media screen and (prefers-color-scheme:dark){:root{color-scheme:dark;--paper:#15181b;--ink:#e6e6e6;--soft:#a8adb3;
--line:#3a4047;--band:#1f2429;--link:#8bbdf0;--error:#ff8a80;--warning:#f0b85a}}
*{box-sizing:border-box}
[hidden]{display:none!important}
body{margin:0 auto;padding:1.5rem 1rem 3rem;max-width:75rem;background:var(--paper);color:var(--ink);
font:15px/1.45 'DejaVu Sans','Liberation Sans',Arial,sans-serif;overflow-wrap:break-word}
h1{font-size:1.6rem;line-height:1.25;margin:0 0 .3rem}
h2{font-size:1.15rem;margin:2rem 0 .6rem;padding-bottom:.25rem;border-bottom:2px solid var(--line)}
p{margin:.4rem 0}
.soft,footer{color:var(--soft)}
table{border-collapse:collapse;width:100%;font-size:.9rem;margin:.6rem 0}
caption{text-align:left;font-weight:bold;padding:.5rem 0}
th,td{text-align:left;vertical-align:top;padding:.3rem .6rem;border-bottom:1px solid var(--line);unicode-bidi:isolate}
thead th{background:var(--band);white-space:nowrap}
.w{overflow-wrap:anywhere}
.k{white-space:nowrap}
.n{text-align:right;font-variant-numeric:tabular-nums}
dl{display:grid;grid-template-columns:max-content minmax(0,1fr);gap:.2rem 1.2rem;margin:.6rem 0}
dt{color:var(--soft)}dd{margin:0;unicode-bidi:isolate}
ol,ul{padding-left:1.4rem}li{margin:.5rem 0}
.error,.warning{font-weight:bold}.error{color:var(--error)}.warning{color:var(--warning)}
.remedy{display:block;color:var(--soft)}
.map{overflow-x:auto;border:1px solid var(--line);background:#fff}
.map svg{display:block;width:100%;min-width:56rem;height:auto}
.filter input{font:inherit;width:100%;max-width:28rem;padding:.4rem .6rem;border:1px solid var(--soft);border-radius:4px;
background:var(--paper);color:var(--ink)}
@media screen and (max-width:40rem){
thead{position:absolute;left:-999rem}
table,caption,tbody,tr,td{display:block;width:100%}
tr{padding:.4rem 0;border-bottom:1px solid var(--line)}
td{display:flex;gap:1rem;justify-content:space-between;border:0;padding:.1rem 0;text-align:right}
td::before{content:attr(data-name);color:var(--soft);text-align:left;flex:none}
td:empty{display:none}
dl{grid-template-columns:minmax(0,1fr);gap:0}dd{margin-bottom:.4rem}}
@page{size:A4;margin:14mm}
@media print{body{max-width:none;padding:0;font-size:10pt}.filter{display:none}
tr[hidden]{display:table-row!important}
h2{margin-top:1.2rem}table{font-size:8.5pt}.w{font-size:7pt}tr,li,dl,.map,.short{break-inside:avoid}h2,caption{break-after:avoid}.map{overflow:visible;border:0}.map svg{min-width:0}}
)";

// Hides the rows that lack one of the words in the field; a printed page has all rows.
const char* const script = R"(
document.querySelectorAll('.filter').forEach(function (box) {
  var rows = document.querySelectorAll('#' + box.dataset.table + ' tbody tr');
  var field = box.querySelector('input'), told = box.querySelector('span');
  function apply() {
    var words = field.value.toLowerCase().split(/\s+/), shown = 0;
    rows.forEach(function (row) {
      var text = row.textContent.toLowerCase();
      row.hidden = !words.every(function (word) { return text.includes(word); });
      shown += row.hidden ? 0 : 1;
    });
    told.textContent = shown + ' of ' + rows.length;
  }
  field.addEventListener('input', apply);
  box.hidden = false;
  apply();
});
)";

const std::size_t rowsInOnePiece = 15; // a table up to this size moves to the next page rather than break

/// Control characters are not allowed in HTML.
QString escaped(const QString& text)
{
    QString clean = text;
    for (QChar& c : clean)
        if (c.category() == QChar::Other_Control)
            c = QLatin1Char(' ');
    return clean.toHtmlEscaped();
}

QString escaped(const char* text)
{
    return escaped(QString::fromUtf8(text));
}

/// Numbers are right-aligned. A word longer than a line may break anywhere; a short one, such as a file name,
/// may not break.
QString cellTag(const Value& value)
{
    const QStringList words = value.text.split(QLatin1Char(' '));
    const bool isLong =
        std::any_of(words.begin(), words.end(), [](const QString& word) { return word.size() > 24; });
    return value.data.isDouble() ? QStringLiteral("<td class=\"n\"")
           : isLong              ? QStringLiteral("<td class=\"w\"")
           : words.size() == 1   ? QStringLiteral("<td class=\"k\"")
                                 : QStringLiteral("<td");
}

} // namespace

QByteArray htmlPage(const QString& title, const QString& body)
{
    const QByteArray hash = QCryptographicHash::hash(script, QCryptographicHash::Sha256).toBase64();
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
           "'unsafe-inline'; "
           "script-src 'sha256-" +
           hash +
           "'\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<title>" +
           escaped(title).toUtf8() + "</title>\n<style>" + style + "</style>\n</head>\n<body>\n" +
           body.toUtf8() + "<script>" + script + "</script>\n</body>\n</html>\n";
}

QString htmlHeading(const QString& words)
{
    return QStringLiteral("<h2>%1</h2>\n").arg(escaped(words));
}

QString htmlParagraph(const QString& words)
{
    return QStringLiteral("<p>%1</p>\n").arg(escaped(words));
}

QString htmlFacts(const std::vector<Fact>& facts)
{
    QString html = QStringLiteral("<dl>\n");
    for (const Fact& fact : facts)
        if (fact.title)
            html += QLatin1String("<dt>") + escaped(fact.title) + QLatin1String("</dt><dd>") +
                    escaped(fact.value.text) + QLatin1String("</dd>\n");
    return html + QLatin1String("</dl>\n");
}

QString htmlTable(const Table& table, const char* id)
{
    if (table.rows.empty() || !table.title)
        return {};
    QString html = QLatin1String(table.rows.size() <= rowsInOnePiece ? "<table class=\"short\"" : "<table");
    html += id ? QStringLiteral(" id=\"%1\">").arg(QLatin1String(id)) : QStringLiteral(">");
    html += QLatin1String("<caption>") + escaped(table.title) + QLatin1String("</caption>\n<thead><tr>");
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (table.columns[i].title)
            html += QLatin1String(table.rows.front()[i].data.isDouble() ? "<th class=\"n\">" : "<th>") +
                    escaped(table.columns[i].title) + QLatin1String("</th>");
    html += QLatin1String("</tr></thead>\n<tbody>\n");
    for (const auto& row : table.rows) {
        html += QLatin1String("<tr>");
        for (std::size_t i = 0; i < row.size(); ++i)
            if (table.columns[i].title)
                html += cellTag(row[i]) + QLatin1String(" data-name=\"") + escaped(table.columns[i].title) +
                        QLatin1String("\">") + escaped(row[i].text) + QLatin1String("</td>");
        html += QLatin1String("</tr>\n");
    }
    return html + QLatin1String("</tbody></table>\n");
}

QString htmlFindings(const std::vector<Finding>& findings)
{
    if (findings.empty())
        return htmlParagraph(QStringLiteral("No findings."));
    QString html = QStringLiteral("<ol>\n");
    for (std::size_t i = 0; i < findings.size(); ++i) {
        const Finding& finding = findings[i];
        const QString severity =
            QLatin1String(finding.severity == Finding::Severity::Error ? "error" : "warning");
        html += QLatin1String("<li><span class=\"") + severity + QLatin1String("\">") + severity +
                QLatin1String("</span>: ") + escaped(finding.place) + QLatin1String(": ") +
                escaped(finding.problem) + QLatin1String(" <span class=\"remedy\">&rarr; ") +
                escaped(remedyText(findings, i)) + QLatin1String("</span></li>\n");
    }
    return html + QLatin1String("</ol>\n");
}

QString htmlNotes(const QStringList& notes)
{
    if (notes.isEmpty())
        return {};
    QString html = QStringLiteral("<ul class=\"soft\">\n");
    for (const QString& note : notes)
        html += QLatin1String("<li>") + escaped(note) + QLatin1String("</li>\n");
    return html + QLatin1String("</ul>\n");
}

QString htmlFilter(const char* id)
{
    return QStringLiteral(
               "<p class=\"filter\" data-table=\"%1\" hidden><label>Only rows containing: <input "
               "type=\"search\" placeholder=\"name, area, value ...\"></label> <span></span></p>\n")
        .arg(QLatin1String(id));
}
