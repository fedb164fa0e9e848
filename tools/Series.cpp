#include "collection/CKivDSCompoundCollection.h"
#include "collection/CKivDSCompoundCollectionIterator.h"
#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/Equality.h"
#include "tools/FileList.h"
#include "tools/Input.h"
#include "tools/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include <map>
#include <memory>
#include <unordered_set>

namespace kivds::tool {
namespace {

constexpr unsigned long kSeriesInstanceUid = 0x0020000E;

/// The attributes of one tag in all members.
struct Column
{
    std::vector<const Attribute*> distinct; // in the order in which they came
    std::unordered_set<const Attribute*, AttributeHash, AttributeEqual> seen;
    int members = 0;
};

class Series
{
public:
    explicit Series(std::string uid)
        : m_Uid(std::move(uid)), m_pMembers(new CKivDSCompoundCollection), m_Facade(m_pMembers)
    {
    }
    Series(const Series&) = delete;
    Series& operator=(const Series&) = delete;

    void Add(Collection& member) { m_pMembers->AddCollection(&member, false); }
    void Print(Console& console);

private:
    using Columns = std::map<unsigned long, Column>;

    Columns Gather();

    std::string m_Uid;
    CKivDSCompoundCollection* m_pMembers; // the facade's, by its count
    Collection m_Facade;
};

Series::Columns Series::Gather()
{
    Columns columns;
    CKivDSCompoundCollectionIterator iterator(*m_pMembers, true, true);
    for (auto* attribute = iterator.GetFirstAttribute(); attribute; attribute = iterator.GetNextAttribute()) {
        Column& column = columns[TagOf(*attribute)];
        ++column.members;
        if (column.seen.insert(attribute).second)
            column.distinct.push_back(attribute);
    }
    return columns;
}

void Series::Print(Console& console)
{
    const int members = m_pMembers->GetNumberOfCollections();
    const std::unique_ptr<Collection> first(m_pMembers->GetCollection(0, false));
    TextForm form(*first);
    const Columns columns = Gather();
    const auto isConstant = [&](const Column& column) {
        return column.members == members && column.distinct.size() == 1 &&
               !IsPlaceholder(*column.distinct[0]);
    };
    console.Print(Line().Add(fmt::format("Series {}: {}", m_Uid, Counted(members, "object")), Style::Bold));
    console.Print("Constant:");
    for (const auto& [tag, column] : columns) {
        if (isConstant(column))
            console.Print(form.LineOf(*column.distinct[0], "  "));
    }
    console.Print("Varying, with the number of distinct values:");
    for (const auto& [tag, column] : columns) {
        if (isConstant(column) || IsPlaceholder(*column.distinct[0]))
            continue;
        std::string text;
        constexpr std::size_t kExamples = 3;
        for (std::size_t i = 0; i < std::min(kExamples, column.distinct.size()); ++i)
            text += (i ? ", " : "") + form.Values(*column.distinct[i]);
        if (column.distinct.size() > kExamples)
            text += ", ...";
        if (column.members < members)
            text += fmt::format("  (in {} of {})", column.members, members);
        console.Print(
            form.Head(*column.distinct[0], "  ", Style::Plain, std::to_string(column.distinct.size()))
                .Add(text));
    }
    console.Print("Not compared, since a collection does not keep them:");
    for (const auto& [tag, column] : columns) {
        if (IsPlaceholder(*column.distinct[0]))
            console.Print(form.LineOf(*column.distinct[0], "  ")
                              .Add(column.members < members
                                       ? fmt::format("  (in {} of {})", column.members, members)
                                       : ""));
    }
}

int GatherSeries(const std::string& folder, Console& console)
{
    int status = kDone;
    FileList list;
    if (!list.Add(folder, console))
        return kTrouble;
    std::map<std::string, Series> series;
    console.StartProgress(list.Files().size());
    for (const auto& [path, isNamed] : list.Files()) {
        console.Step(path.string());
        const Input input = OpenInput(path, console);
        if (!input) {
            Worsen(status, input.status);
            continue;
        }
        const std::string uid = TextOf(*input.collection, kSeriesInstanceUid);
        if (uid.empty()) {
            console.Message(path, "skipped: belongs to no series, it has no Series Instance UID");
            Worsen(status, kNo);
            continue;
        }
        series.try_emplace(uid, uid).first->second.Add(*input.collection);
    }
    console.EndProgress();
    for (auto& [uid, one] : series)
        one.Print(console);
    if (series.empty()) {
        console.Message(folder, "holds no object of a series");
        Worsen(status, kTrouble);
    }
    return status;
}

} // namespace

void AddSeries(CLI::App& app, Console& console, int& status)
{
    const auto folder = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand(
        "series", "Gather the objects of a series and show which attributes are constant and which vary");
    command->add_option("DIR", *folder, "A folder, walked recursively; each series in it is shown by itself")
        ->required();
    command->callback([folder, &console, &status] { status = GatherSeries(*folder, console); });
}

} // namespace kivds::tool
