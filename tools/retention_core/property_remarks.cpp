// Compares a project's tree with the names and types that the module reads.
// SPDX-License-Identifier: MIT
#include "tools/retention_core/property_remarks.h"

#include "poweroff_protect/retention_settings.h"

#include <QtCore/QString>

#include <algorithm>
#include <numeric>

namespace {

using Kind = PropertyRemark::Kind;

struct KnownProperty
{
    const char* name;
    bool isText;
    const char* readAs; ///< when it is missing or of the wrong type
    bool decisive;      ///< the files depend on it
    bool remarkMissing; ///< no other finding tells that it is missing
};

const char* const retentionName = "DataRetention";
const char* const sourceName = "sourceAddress";
const char* const noText = "an empty string";

const KnownProperty saveAll = {"open Save all", false, "0", true, true};
const KnownProperty saveTime = {"Save Time", false, "5", true, true};
const KnownProperty saveTimeWithoutEffect = {"Save Time", false, "5", false, false};
const std::vector<KnownProperty> ofEntry = {{"addressLength", false, "0", true, false},
                                            {"addressType", true, noText, false, false}};
const std::vector<KnownProperty> ofSource = {
    {"Link", true, noText, false, false},     {"Block", true, noText, true, false},
    {"No", true, noText, false, false},       {"index", false, "0", true, true},
    {"station", false, "0", false, false},    {"length", false, "0", false, false},
    {"Bit_or_Word", false, "0", false, false}};

/// The name in lower case and without characters that people vary.
QString normal(const QString& name)
{
    QString letters;
    for (const QChar c : name.toLower())
        if (c.isLetterOrNumber())
            letters += c;
    return letters;
}

/// The number of letters that must be added, removed or changed.
int editDistance(const QString& a, const QString& b)
{
    std::vector<int> row(static_cast<std::size_t>(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0]++;
        for (int j = 0; j < b.size(); ++j) {
            int& cell = row[static_cast<std::size_t>(j) + 1];
            const int changed = diagonal + (a.at(i) == b.at(j) ? 0 : 1);
            diagonal = cell;
            cell = std::min({cell + 1, row[static_cast<std::size_t>(j)] + 1, changed});
        }
    }
    return row.back();
}

bool looksLike(const QString& name, const char* known)
{
    const QString a = normal(name);
    const QString b = normal(QLatin1String(known));
    const int most = b.size() < 4 ? 0 : b.size() < 6 ? 1 : 2;
    return editDistance(a, b) <= most;
}

class Remarks
{
public:
    std::vector<PropertyRemark> found;

    void checkProject(const object& project)
    {
        const object* const retention = project.findChild(QLatin1String(retentionName));
        if (!retention) {
            for (const auto& child : project.children) {
                if (looksLike(child->name, retentionName))
                    addObject(Kind::ObjectMisspelt, 0, project, *child, retentionName);
                else
                    findMisplaced(*child);
            }
            return;
        }
        const RetentionMode mode = readRetentionSettings(const_cast<object*>(retention)).mode;
        const bool images = mode == RetentionMode::WholeAreas;
        checkProperties(0, *retention, {saveAll, images ? saveTime : saveTimeWithoutEffect});
        if (images)
            return;
        int number = 0;
        for (const auto& child : retention->children)
            checkEntry(++number, *child);
    }

private:
    void checkEntry(int number, const object& entry)
    {
        const object* const source = entry.findChild(QLatin1String(sourceName));
        checkProperties(number, entry, ofEntry);
        if (source)
            checkProperties(number, *source, ofSource);
        for (const auto& child : entry.children) {
            if (child.get() == source)
                continue;
            const bool meant = !source && looksLike(child->name, sourceName);
            addObject(meant ? Kind::ObjectMisspelt : Kind::ObjectNotRead, number, entry, *child,
                      meant ? sourceName : "");
        }
        if (source)
            for (const auto& child : source->children)
                addObject(Kind::ObjectNotRead, number, *source, *child, "");
    }

    void checkProperties(int entry, const object& holder, const std::vector<KnownProperty>& known)
    {
        std::vector<const KnownProperty*> explained;
        for (const auto& one : holder.properties) {
            const auto same = std::find_if(known.begin(), known.end(), [&](const KnownProperty& candidate) {
                return one->name == QLatin1String(candidate.name);
            });
            if (same != known.end()) {
                if (one->isText != same->isText)
                    add(Kind::WrongType, entry, holder, one->name, *same);
                continue;
            }
            const auto meant = std::find_if(known.begin(), known.end(), [&](const KnownProperty& candidate) {
                return !holder.findProperty(QLatin1String(candidate.name)) &&
                       looksLike(one->name, candidate.name);
            });
            if (meant == known.end()) {
                found.push_back({Kind::NotRead, entry, holder.name, one->name, {}, {}});
                continue;
            }
            add(Kind::Misspelt, entry, holder, one->name, *meant);
            explained.push_back(&*meant);
        }
        for (const KnownProperty& one : known) {
            if (holder.findProperty(QLatin1String(one.name)) ||
                std::find(explained.begin(), explained.end(), &one) != explained.end())
                continue;
            if (one.remarkMissing)
                add(Kind::Missing, entry, holder, QLatin1String(one.name), one);
            else if (entry > 0 && !one.decisive)
                add(Kind::Defaulted, entry, holder, QLatin1String(one.name), one);
        }
    }

    void findMisplaced(const object& holder)
    {
        for (const auto& child : holder.children) {
            if (child->name == QLatin1String(retentionName))
                addObject(Kind::ObjectMisplaced, 0, holder, *child, retentionName);
            findMisplaced(*child);
        }
    }

    void add(Kind kind, int entry, const object& holder, const QString& name, const KnownProperty& known)
    {
        found.push_back({kind, entry, holder.name, name, QLatin1String(known.name),
                         QLatin1String(known.readAs), !known.isText, known.decisive});
    }

    void addObject(Kind kind, int entry, const object& holder, const object& child, const char* known)
    {
        found.push_back({kind,
                         entry,
                         holder.name,
                         child.name,
                         QLatin1String(known),
                         {},
                         false,
                         kind != Kind::ObjectNotRead});
    }
};

} // namespace

std::vector<PropertyRemark> propertyRemarks(const object* project)
{
    Remarks remarks;
    if (project)
        remarks.checkProject(*project);
    return remarks.found;
}
