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
    using Counts = TEV2_LOADER::Counts;

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

    void Text(const char* label, const auto&) { Add(label, Counts::kNever); }
    void LegacyMatrix(const char* label, const auto&) { Add(label, Counts::kNever); }

    void Value(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Constant(const char* label, const auto&, const auto&, Counts counts = Counts::kBoth)
    {
        Add(label, counts);
    }
    void Texts(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Bytes(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Values(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Record(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Records(const char* label, const auto&, Counts counts = Counts::kBoth, const auto&...)
    {
        Add(label, counts);
    }
    void Track(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Bool(const char* label, bool, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Choice(const char* label, auto, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Layout() { Add("layout", Counts::kBoth); }
    void Optional(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Typed(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void TypedObjects(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }
    void Effects(const char* label, const auto&, const auto&, Counts counts = Counts::kBoth)
    {
        Add(label, counts);
    }
    void VertexCount(const char* label, std::uint32_t, std::size_t) { Add(label, Counts::kBoth); }
    void Column(const char* label, const auto&, std::size_t) { Add(label, Counts::kBoth); }
    void OptionalColumn(const char* label, const auto&, std::size_t) { Add(label, Counts::kBoth); }
    void ColumnGroup(const char* label, const auto&, std::size_t) { Add(label, Counts::kBoth); }
    void Run(const char* label, const auto&, std::size_t) { Add(label, Counts::kBoth); }
    void Map(const char* label, const auto&, Counts counts = Counts::kBoth) { Add(label, counts); }

private:
    bool Gate(const char* word, float version)
    {
        gate_ = word + TEV2_LOADER::NumberText(version);
        return true;
    }

    void Add(const std::string& label, Counts counts = Counts::kBoth)
    {
        fields.push_back(label + gate_);
        gate_.clear();
        counted.push_back(label + (InSave(counts) ? " Save" : "") + (InLoad(counts) ? " Load" : ""));
    }

    std::string gate_;
};

} // namespace tv2_tests
