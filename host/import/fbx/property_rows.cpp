#include "host/import/fbx/property_rows.h"

#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace mobu_host::fbx
{

PropertyRows::PropertyRows(const Record& owner)
{
    Record table = owner.Child("Properties70");
    std::string_view row_name = "P";
    std::size_t first_value = 4; // name, kind, label, flags
    if (!table)
    {
        table = owner.Child("Properties60");
        row_name = "Property";
        first_value = 3; // name, kind, flags
    }
    std::size_t count = 0;
    for (const Record& record : table.Children())
        count += record.Name() == row_name ? 1 : 0;
    rows_.reserve(count);
    by_name_.reserve(count);
    for (const Record& record : table.Children())
    {
        if (record.Name() != row_name)
            continue;
        PropertyRow row;
        ValueCursor cursor(record);
        Value value;
        std::string_view* const texts[] = {&row.name, &row.kind, nullptr, &row.flags};
        for (std::size_t i = 0; i < first_value && cursor.Next(value); ++i)
            if (std::string_view* text = texts[i + (first_value == 3 && i == 2 ? 1 : 0)])
                *text = value.Text().value_or(std::string_view());
        row.record = record;
        row.first_value = first_value;
        by_name_.push_back(static_cast<std::uint32_t>(rows_.size()));
        rows_.push_back(row);
    }
    std::sort(by_name_.begin(), by_name_.end(),
              [this](std::uint32_t a, std::uint32_t b)
              { return std::tie(rows_[a].name, a) < std::tie(rows_[b].name, b); });
}

const PropertyRow* PropertyRows::Find(std::string_view name) const
{
    const auto found = std::lower_bound(by_name_.begin(), by_name_.end(), name,
                                        [this](std::uint32_t row, std::string_view wanted)
                                        { return rows_[row].name < wanted; });
    return found == by_name_.end() || rows_[*found].name != name ? nullptr : &rows_[*found];
}

const PropertyRow* PropertyView::Find(std::string_view name) const
{
    for (const PropertyRows* rows : places_)
        if (const PropertyRow* row = rows ? rows->Find(name) : nullptr)
            return row;
    return nullptr;
}

double FiniteNumber(const PropertyRow& row, std::size_t component, double otherwise)
{
    const double number = row.Number(component, otherwise);
    if (!IsExportable(number))
        throw ParseError(row.record.Offset(),
                         "property \"" + std::string(row.name) + "\" is not a finite number");
    return number;
}

double PropertyView::Number(std::string_view name, double otherwise) const
{
    const PropertyRow* row = Find(name);
    return row ? FiniteNumber(*row, 0, otherwise) : otherwise;
}

std::array<double, 3> PropertyView::Vector(std::string_view name,
                                           const std::array<double, 3>& otherwise) const
{
    const PropertyRow* row = Find(name);
    if (!row)
        return otherwise;
    std::array<double, 3> vector;
    for (std::size_t i = 0; i < 3; ++i)
        vector[i] = FiniteNumber(*row, i, otherwise[i]);
    return vector;
}

int PropertyView::Choice(std::string_view name, int otherwise) const
{
    const PropertyRow* row = Find(name);
    const auto whole = row ? row->ValueAt(0).Whole() : std::nullopt;
    return whole && *whole >= -1000000 && *whole <= 1000000 ? static_cast<int>(*whole) : otherwise;
}

} // namespace mobu_host::fbx
