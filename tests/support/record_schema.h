#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/load_report.h"

#include <string>
#include <vector>

namespace tv2_tests
{

/// An archive that notes what a record says of its fields: "scale since 1.15" and the results that each counts in.
class RecordSchema
{
public:
    std::vector<std::string> fields;
    std::vector<std::string> counted; ///< "scale Save Load"; "name" where it never counts

    /// The fields of a record that has nothing in it.
    template <typename Record>
    static RecordSchema Of(const Record& record = {})
    {
        RecordSchema schema;
        Record::Fields(record, schema);
        return schema;
    }

    bool Since(float version) { return Gate(" since ", version); }
    bool UpTo(float version) { return Gate(" up to ", version); }

    template <typename Field>
    void Text(const char* label, const Field&)
    {
        Add(label, TEV2_LOADER::Counts::kNever);
    }

    // All others have the label first and, but for Constant and Records, what they count in last.
    template <typename Field>
    void Value(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Constant(const char* label, const Field&, Field, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Texts(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Bytes(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Values(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Record(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field, typename... Examine>
    void Records(const char* label, const Field&, TEV2_LOADER::Counts counts, const Examine&...)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Track(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Objects(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void Map(const char* label, const Field&, TEV2_LOADER::Counts counts)
    {
        Add(label, counts);
    }
    template <typename Field>
    void LegacyMatrix(const char* label, const Field&)
    {
        Add(label, TEV2_LOADER::Counts::kNever);
    }

private:
    bool Gate(const char* word, float version)
    {
        gate_ = word + TEV2_LOADER::NumberText(version);
        return true;
    }

    void Add(const std::string& label, TEV2_LOADER::Counts counts)
    {
        fields.push_back(label + gate_);
        gate_.clear();
        counted.push_back(label + (InSave(counts) ? " Save" : "") + (InLoad(counts) ? " Load" : ""));
    }

    std::string gate_;
};

} // namespace tv2_tests
