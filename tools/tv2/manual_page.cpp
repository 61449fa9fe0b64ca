#include "tools/tv2/manual_page.h"

#include "text/utf8.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>

namespace tv2
{

namespace
{

/// What a shell or a system reads letter by letter: an option, a path, a file name.
bool IsLiteral(std::string_view word)
{
    const std::size_t start = word.find_first_not_of("([\"'");
    return start != std::string_view::npos &&
           (word[start] == '-' || word.find("--") != std::string_view::npos ||
            word.find_first_of("/_<=") != std::string_view::npos);
}

std::string RoffCharacter(char32_t c, bool literal)
{
    static const std::map<char32_t, std::string> escapes = {
        {U'\\', "\\(rs"}, {U'\'', "\\(aq"}, {U'`', "\\(ga"}, {U'^', "\\(ha"}, {U'~', "\\(ti"}};
    if (const auto found = escapes.find(c); found != escapes.end())
        return found->second;
    if (c == U'-')
        return literal ? "\\-" : "-";
    if (c < 0x80)
        return std::string(1, static_cast<char>(c));
    const std::string digits = HexText(c, 4).substr(2);
    std::string upper(digits.size(), '0');
    std::transform(digits.begin(), digits.end(), upper.begin(),
                   [](char digit)
                   { return static_cast<char>(std::toupper(static_cast<unsigned char>(digit))); });
    return "\\[u" + upper + "]";
}

std::string RoffWord(std::string_view word, bool literal)
{
    std::string roff;
    while (!word.empty())
        roff += RoffCharacter(TakeCharacter(word), literal);
    return roff;
}

/// A line of a program, every character as it is.
std::string RoffLine(std::string_view line)
{
    const std::string roff = RoffWord(line, true);
    return roff.starts_with('.') ? "\\&" + roff : roff;
}

std::string Bold(std::string_view text)
{
    return "\\fB" + RoffWord(text, true) + "\\fR";
}

std::string Italic(std::string_view text)
{
    return "\\fI" + RoffWord(text, true) + "\\fR";
}

std::string Paragraphs(std::string_view text)
{
    std::istringstream lines{std::string(text)};
    std::string roff;
    for (std::string line; std::getline(lines, line);)
        if (!line.empty())
            roff += (roff.empty() ? "" : ".PP\n") + RoffText(line) + '\n';
    return roff;
}

/// With a capital first letter and a full stop.
std::string Sentence(std::string text)
{
    if (!text.empty())
        text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text.empty() || text.ends_with('.') ? text : text + '.';
}

std::string Heading(const std::string& name, std::string_view section, std::string_view date)
{
    std::string title = name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
    return ".TH \"" + RoffWord(title, true) + "\" \"" + std::string(section) + "\" \"" + std::string(date) +
           "\" \"tv2 " TV2_VERSION "\" \"User Commands\"\n.nh\n.ad l\n";
}

std::string Item(const std::string& tag, const std::string& roff)
{
    return ".TP\n" + tag + '\n' + roff;
}

bool TakesSeveral(const OptionRow& row)
{
    return std::holds_alternative<std::vector<std::string>*>(row.value);
}

/// How an argument is written in the synopsis: FILE, [FILE], FILE...
std::string ArgumentForm(const OptionRow& row)
{
    const std::string form = Italic(row.name) + (TakesSeveral(row) ? " ..." : "");
    return row.required ? form : "[" + form + "]";
}

std::string OptionItem(const OptionRow& row)
{
    std::string tag;
    for (const std::string& name : NamesOf(row))
    {
        tag += (tag.empty() ? "" : ", ") + (IsOption(row) ? Bold(name) : Italic(name));
        if (IsOption(row) && !IsFlag(row))
            tag += " " + Italic(ValueName(row));
    }
    std::string help = Sentence(row.help);
    if (!row.one_of.empty())
        help += " One of: " + Listed(row.one_of) + ".";
    if (row.range)
        help +=
            " From " + std::to_string(row.range->first) + " to " + std::to_string(row.range->second) + ".";
    if (IsOption(row) && TakesSeveral(row))
        help += " Can be repeated.";
    if (row.excludes != nullptr)
        help += std::string(" Not with ") + row.excludes + ".";
    return Item(tag, Paragraphs(help));
}

std::string Examples(std::string_view examples)
{
    std::string roff = ".SH EXAMPLES\n.EX\n";
    std::istringstream lines{std::string(examples)};
    for (std::string line; std::getline(lines, line);)
        roff += RoffLine(line) + '\n';
    return roff + ".EE\n";
}

std::string ExitStatus()
{
    return ".SH \"EXIT STATUS\"\n" + Item("0", "Success.\n") + Item("1", "Finished, but with problems.\n") +
           Item("2", "Could not start: wrong usage, or a file that cannot be read or written.\n");
}

std::string Named(const std::vector<std::pair<std::string, std::string>>& items)
{
    std::string roff;
    for (const auto& [name, text] : items)
        roff += Item(Bold(name), Paragraphs(text));
    return roff;
}

std::string Files()
{
    return ".SH FILES\n" +
           Named(
               {{"~/.config/Tev2_Exporter_MB/settings",
                 "The settings of the export dialog; in $XDG_CONFIG_HOME instead of ~/.config where it is "
                 "set."},
                {".tv2-stamps",
                 "In the folder of a batch: of which scene, options and version of the command each file is. "
                 "tv2 export --newer reads it; without it every scene is exported."},
                {".NAME.PROCESS-NUMBER.part", "A file that is being written, beside its place. One that a "
                                              "killed process left is removed by the "
                                              "next one that writes the same file."}});
}

std::string Environment()
{
    return ".SH ENVIRONMENT\n" +
           Named({{"SOURCE_DATE_EPOCH", "The time of export in the files, in seconds since 1970, instead of "
                                        "the current time: exports can "
                                        "be repeated byte for byte."},
                  {"XDG_CONFIG_HOME", "The folder of the dialog's settings."},
                  {"HOME", "Where .config is, if XDG_CONFIG_HOME is not set."},
                  {"TMPDIR",
                   "The folder for temporary files: pages of tv2 view, and what --report measures with."},
                  {"DISPLAY", "Where the export dialog and the browser are shown."},
                  {"WAYLAND_DISPLAY", "The same for the browser."}});
}

} // namespace

std::string RoffText(std::string_view text)
{
    std::string roff;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        roff += RoffWord(word, IsLiteral(word));
        text.remove_prefix(end);
        const bool more = text.starts_with(' ');
        if (more)
            text.remove_prefix(1);
        roff += more ? " " : "";
    }
    return roff.starts_with('.') ? "\\&" + roff : roff;
}

std::string VerbPage(const VerbRow& row, std::string_view date)
{
    const std::string name(row.name);
    const std::unique_ptr<Verb> verb = row.make();
    CommonOptions common;
    const std::vector<OptionRow> options = AllOptions(row, *verb, common);
    std::string synopsis = Bold("tv2 " + name) + " [" + Italic("OPTION") + "]...";
    std::string arguments;
    std::string items = Item(Bold("-h") + ", " + Bold("--help"), "Print the help of the command.\n");
    for (const OptionRow& option : options)
    {
        if (IsOption(option))
        {
            items += OptionItem(option);
            continue;
        }
        synopsis += " " + ArgumentForm(option);
        arguments += OptionItem(option);
    }
    std::string about(row.help);
    std::transform(about.begin(), about.begin() + 1, about.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return Heading("tv2-" + name, "1", date) + ".SH NAME\ntv2\\-" + name + " \\- " + RoffText(about) +
           "\n.SH SYNOPSIS\n" + synopsis + "\n.SH DESCRIPTION\n" +
           Paragraphs(Sentence(std::string(row.help))) + arguments +
           (row.remarks.empty() ? "" : ".PP\n" + Paragraphs(row.remarks)) + ".SH OPTIONS\n" + items +
           Examples(row.examples) + ExitStatus() + ".SH \"SEE ALSO\"\n.BR tv2 (1),\n.BR tv2 (5)\n";
}

std::string CommandPage(const std::vector<VerbRow>& rows, std::string_view date)
{
    std::string verbs;
    std::string pages;
    for (const VerbRow& row : rows)
    {
        const std::string page = ".BR tv2\\-" + std::string(row.name) + " (1)";
        verbs += ".TP\n" + page + '\n' + Paragraphs(Sentence(std::string(row.help)));
        pages += page + ",\n";
    }
    return Heading("tv2", "1", date) +
           ".SH NAME\ntv2 \\- export, inspect, check, convert and view .tv2 scene files\n"
           ".SH SYNOPSIS\n" +
           Bold("tv2") + " " + Italic("COMMAND") + " [" + Italic("OPTION") + "]... [" + Italic("FILE") +
           "]...\n.br\n" + Bold("tv2") + " " + Bold("--help") + " | " + Bold("--version") +
           "\n.SH DESCRIPTION\n" +
           Paragraphs(
               "Works with .tv2 scene files: exports them from scene files and answers "
               "questions about them. Each command has a page of its own, and a summary of it with --help.") +
           ".SH COMMANDS\n" + verbs + ExitStatus() + Files() + Environment() + ".SH \"SEE ALSO\"\n" + pages +
           ".BR tv2 (5)\n";
}

} // namespace tv2
