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
                QStringLiteral("%1 has no %2, so the module uses %3.")
                    .arg(QLatin1String(inSource ? "its \"sourceAddress\"" : "it"), name, remark.readAs),
                QStringLiteral("Add %1 with the intended value.").arg(name)};
    case Kind::Misspelt:
        return {loss, "property-misspelt",
                QStringLiteral("the module does not read %1; it reads %2, which is missing, so it uses %3.")
                    .arg(where, quoted(remark.known), remark.readAs),
                QStringLiteral("Rename it to %1.").arg(quoted(remark.known))};
    case Kind::WrongType:
        return {loss, "property-wrong-type",
                QStringLiteral("%1 is a %2, not a %3, so the module uses %4.")
                    .arg(where, QLatin1String(remark.isText ? "string" : "number"),
                         QLatin1String(remark.isText ? "number" : "string"), remark.readAs),
                QStringLiteral("Change its type to \"%1\".")
                    .arg(QLatin1String(!remark.isText      ? "string"
                                       : remark.entry == 0 ? "uint32"
                                                           : "int32"))};
    case Kind::NotRead:
        return {Finding::Severity::Warning, "property-not-read",
                QStringLiteral("the module does not read %1.").arg(where),
                QStringLiteral(
                    "No action needed if it is meant for another part of the runtime; otherwise remove it.")};
    case Kind::ObjectMisspelt:
        return {loss, "object-misspelt",
                QStringLiteral("the module does not read the object %1; it looks for %2.")
                    .arg(name, quoted(remark.known)),
                QStringLiteral("Rename it to %1.").arg(quoted(remark.known))};
    case Kind::ObjectMisplaced:
        return {loss, "object-misplaced",
                QStringLiteral("the object %1 is inside %2, where the module does not look for it.")
                    .arg(name, quoted(remark.holder)),
                QStringLiteral("Move it to the top level of the project.")};
    case Kind::Defaulted: // no finding
    case Kind::ObjectNotRead:
        break;
    }
    return {Finding::Severity::Warning, "object-not-read",
            QStringLiteral("the module does not read the object %1%2.")
                .arg(where, QLatin1String(remark.name == QLatin1String("sourceAddress")
                                              ? ": only the first one with this name counts"
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
    return names.isEmpty() ? QString()
                           : QStringLiteral("Some entries do not set %1. The module then uses an empty "
                                            "string or 0; what is retained does not depend on it.")
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
