#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZuHost
{

/// Makes the schemas of the records: of those in description.json, and of the documents of the running service.
///
/// Three keywords of description.json stand for a schema of the service:
/// - "x-schema-of": the schema of the document at this path;
/// - "x-schemas-of": any of the schemas of the documents in the list at this path. "*" stands for each element of the
///   list before it. Each document becomes a record of its own; "required" and "properties" hold for each of them;
/// - "x-arguments-of": the member "parameters" of any of the documents of such a record.
/// A document that cannot be read has no schema.
class DescribedRecords final
{
public:
    /// Returns the document at a path with its schema. Throws if there is none.
    using Reader = std::function<nlohmann::json(std::string const& path)>;

    /// `readDocument` is called by `Make` only.
    DescribedRecords(nlohmann::json newRecords, Reader newReadDocument);
    ~DescribedRecords();

    DescribedRecords(DescribedRecords const&) = delete;
    DescribedRecords& operator=(DescribedRecords const&) = delete;

    /// Lets a record, and each record made of it, have the members that every HAL document may have.
    void MarkAsHal(std::string const& name);

    /// Returns the schemas by the names of the records.
    nlohmann::json Make();

    /// Returns the reference to a record.
    static nlohmann::json ReferenceTo(std::string const& name);

private:
    struct Document
    {
        std::string name; // "ModbusTcp.orderTest"
        std::string path;
    };

    std::vector<Document> Expand(std::string const& pattern, std::string const& name) const;
    std::vector<Document> ElementsOf(std::string const& path, std::string const& name) const;
    nlohmann::json DocumentAt(std::string const& path) const;
    void AddVariants(std::string const& name, nlohmann::json const& record, nlohmann::json& schemas);
    void FillIn(nlohmann::json& schema) const;

    nlohmann::json const records;
    Reader const readDocument;
    std::vector<std::string> halRecords;
    std::map<std::string, std::vector<std::string>> variants; // of the records with "x-schemas-of"
};

} // namespace ZuHost
