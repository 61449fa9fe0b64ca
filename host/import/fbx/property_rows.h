#pragma once

#include "host/import/fbx/record_tree.h"

#include <string_view>
#include <vector>

namespace mobu_host::fbx
{

/// One row of Properties60 or Properties70: name, kind, flags, values.
struct PropertyRow
{
    std::string_view name;
    std::string_view kind;  // "Lcl Translation", "bool", "Number" ...
    std::string_view flags; // "A" animatable, "U" made by a user, "+" animated; all in one text
    Record record;
    std::size_t first_value = 0; // position of the value among the record's

    bool Has(char flag) const { return flags.find(flag) != std::string_view::npos; }
    Value ValueAt(std::size_t component) const { return record.ValueAt(first_value + component); }
    double Number(std::size_t component, double otherwise) const
    {
        return record.NumberAt(first_value + component, otherwise);
    }
};

/// The rows below a record, in file order.
class PropertyRows
{
public:
    PropertyRows() = default;
    explicit PropertyRows(const Record& owner);

    const PropertyRow* Find(std::string_view name) const; // null where there is none
    const std::vector<PropertyRow>& All() const { return rows_; }

private:
    std::vector<PropertyRow> rows_;
    std::vector<std::uint32_t> by_name_; // their indices by name, then in file order
};

/// Looks a property up in several places, the first that has it wins: an object's own rows, then its class's.
class PropertyView
{
public:
    PropertyView(std::initializer_list<const PropertyRows*> places) : places_(places) {}

    const PropertyRow* Find(std::string_view name) const;
    /// Throws ParseError where the file states what is not finite.
    double Number(std::string_view name, double otherwise) const;
    std::array<double, 3> Vector(std::string_view name, const std::array<double, 3>& otherwise) const;
    bool Truth(std::string_view name, bool otherwise) const
    {
        return Number(name, otherwise ? 1.0 : 0.0) != 0.0;
    }
    int Choice(std::string_view name, int otherwise) const; // an enumeration's number, or a small whole one

private:
    std::vector<const PropertyRows*> places_;
};

/// Throws ParseError where the value is not finite.
double FiniteNumber(const PropertyRow& row, std::size_t component, double otherwise);

} // namespace mobu_host::fbx
