#pragma once

#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>

namespace tv2
{

/// Help that fits the terminal.
class FittedHelp : public CLI::Formatter
{
public:
    FittedHelp() : columns_(std::clamp(TerminalColumns(Stream::kOutput), kLeastColumns, kMostColumns))
    {
        label("SUBCOMMAND", "COMMAND");
        label("Subcommand", "Command");
    }

    std::string make_option(const CLI::Option* option, bool is_positional) const override
    {
        std::string name = make_option_name(option, is_positional);
        if (name.find("{false}") != std::string::npos) // --flag,--no-flag{false}
            name = "--[no-]" + option->get_lnames().front();
        return Row(name + make_option_opts(option), make_option_desc(option));
    }

    std::string make_subcommand(const CLI::App* command) const override
    {
        return Row(command->get_name(), command->get_description());
    }

    std::string make_description(const CLI::App* command) const override
    {
        return Wrapped(CLI::Formatter::make_description(command), columns_);
    }

    std::string make_footer(const CLI::App* command) const override
    {
        return Wrapped(CLI::Formatter::make_footer(command), columns_);
    }

private:
    static constexpr std::size_t kLeastColumns = 60;
    static constexpr std::size_t kMostColumns = 100;
    static constexpr std::size_t kColumn = 26; // of the descriptions

    std::string Row(const std::string& name, const std::string& description) const
    {
        std::string row = "  " + Wrapped(name, columns_, 4, 2);
        const std::size_t used = ColumnsOf(row.substr(row.rfind('\n') + 1));
        row += used + 2 > kColumn ? '\n' + std::string(kColumn, ' ') : std::string(kColumn - used, ' ');
        return row + Wrapped(description, columns_, kColumn, kColumn) + '\n';
    }

    std::size_t columns_;
};

} // namespace tv2
