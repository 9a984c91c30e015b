// Reports what the module does not read in a project, once for all entries that share it.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/findings.h"

#include <algorithm>

namespace {

using Kind = PropertyRemark::Kind;

struct Wording
{
    Finding::Severity severity;
    const char* kind;
    QString problem;
    QString remedy;
};

QString quoted(const QString& name)
{
    return QLatin1Char('"') + name + QLatin1Char('"');
}

Wording wordingOf(const PropertyRemark& remark)
{
    const bool inSource = remark.entry > 0 && remark.holder == QLatin1String("sourceAddress");
    const QString name = quoted(remark.name);
    const QString where = name + QLatin1String(inSource ? " in its \"sourceAddress\"" : "");
    const auto loss = remark.decisive ? Finding::Severity::Error : Finding::Severity::Warning;
    switch (remark.kind) {
    case Kind::Missing:
        // Without an index, the wrong cells are kept; the two others have usual values.
        return {remark.entry > 0 ? loss : Finding::Severity::Warning, "property-missing",
                QStringLiteral("%1 has no %2, which is read as %3.")
                    .arg(QLatin1String(inSource ? "its \"sourceAddress\"" : "it"), name, remark.readAs),
                QStringLiteral("Add %1 with the value that is meant.").arg(name)};
    case Kind::Misspelt:
        return {loss, "property-misspelt",
                QStringLiteral("%1 is not read; %2 is, and counts as %3.")
                    .arg(where, quoted(remark.known), remark.readAs),
                QStringLiteral("Rename it to %1.").arg(quoted(remark.known))};
    case Kind::WrongType:
        return {loss, "property-wrong-type",
                QStringLiteral("%1 is a %2 and not a %3, so it is read as %4.")
                    .arg(where, QLatin1String(remark.isText ? "text" : "number"),
                         QLatin1String(remark.isText ? "number" : "text"), remark.readAs),
                QStringLiteral("Give it the type \"%1\".")
                    .arg(QLatin1String(!remark.isText      ? "string"
                                       : remark.entry == 0 ? "uint32"
                                                           : "int32"))};
    case Kind::NotRead:
        return {Finding::Severity::Warning, "property-not-read", where + QLatin1String(" is not read."),
                QStringLiteral(
                    "Nothing to do when it is meant for another part of the runtime; otherwise remove it.")};
    case Kind::ObjectMisspelt:
        return {loss, "object-misspelt",
                QStringLiteral("the object %1 is not read; %2 would be.").arg(name, quoted(remark.known)),
                QStringLiteral("Rename it to %1.").arg(quoted(remark.known))};
    case Kind::ObjectMisplaced:
        return {
            loss, "object-misplaced",
            QStringLiteral("an object %1 lies in %2, where it is not read.").arg(name, quoted(remark.holder)),
            QStringLiteral("Move it to the top of the project.")};
    case Kind::Defaulted: // no finding
    case Kind::ObjectNotRead:
        break;
    }
    return {Finding::Severity::Warning, "object-not-read",
            QStringLiteral("the object %1 is not read%2.")
                .arg(where, QLatin1String(remark.name == QLatin1String("sourceAddress")
                                              ? ": only the first of that name is"
                                              : "")),
            QStringLiteral("Remove it.")};
}

} // namespace

QString defaultsNote(const ProjectSettings& settings)
{
    QStringList names;
    for (const PropertyRemark& remark : settings.remarks)
        if (remark.kind == Kind::Defaulted && !names.contains(quoted(remark.name)))
            names.append(quoted(remark.name));
    return names.isEmpty()
               ? QString()
               : QStringLiteral("Not set in every entry, and then read as an empty text or 0: %1. What "
                                "is kept does not depend on them.")
                     .arg(names.join(QLatin1String(", ")));
}

std::vector<Finding> propertyFindings(const ProjectSettings& settings)
{
    struct Group
    {
        Wording wording;
        std::vector<const ProjectEntry*> entries;
    };
    std::vector<Group> groups;
    for (const PropertyRemark& remark : settings.remarks) {
        if (remark.kind == Kind::Defaulted)
            continue;
        const Wording wording = wordingOf(remark);
        auto group = std::find_if(groups.begin(), groups.end(), [&](const Group& other) {
            return remark.entry > 0 && !other.entries.empty() && other.wording.problem == wording.problem;
        });
        if (group == groups.end())
            group = groups.insert(groups.end(), {wording, {}});
        if (remark.entry > 0)
            group->entries.push_back(&settings.entries[static_cast<std::size_t>(remark.entry) - 1]);
    }
    std::vector<Finding> findings;
    for (const Group& group : groups) {
        Finding finding = {
            group.wording.severity, group.wording.kind,
            QString::fromLatin1(settings.retentionObjects > 0 ? "\"DataRetention\"" : "project"),
            group.wording.problem, group.wording.remedy};
        if (!group.entries.empty()) {
            finding.place = entriesText(group.entries);
            finding.entry = group.entries.front()->number;
        }
        findings.push_back(finding);
    }
    return findings;
}
