#include "tools/tv2/command_line.h"

#include "text/closest_name.h"
#include "tools/tv2/config_file.h"
#include "tools/tv2/fitted_help.h"
#include "tools/tv2/host_verbs.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

// All that the parser sees, in one place: its header takes longer to compile than the rest of the command.

namespace tv2
{

namespace
{

CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, bool* flag)
{
    const std::vector<std::string> names = NamesOf(row);
    const bool either_way = row.name.starts_with("--[");
    return command.add_flag(either_way ? names[0] + ",!" + names[1] : row.name, *flag, row.help);
}

CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, std::vector<std::string>* texts)
{
    CLI::Option* const option = command.add_option(row.name, *texts, row.help);
    return IsOption(row) ? option->allow_extra_args(false)->option_text("TEXT") : option;
}

CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, const TakeText& take)
{
    const auto take_or_throw = [name = row.name, take](const std::string& text)
    {
        if (const std::string why = take(text); !why.empty())
            throw CLI::ValidationError(name, why);
    };
    return command.add_option_function<std::string>(row.name, take_or_throw, row.help);
}

template <typename Value>
CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, Value* value)
{
    return command.add_option(row.name, *value, row.help);
}

// The parser would split a text in brackets at its commas. This byte before it, which an option removes, prevents that.
constexpr char kShield = '\x01';

/// Takes the zeros from the front of a whole number: the parser would read "010" as 8. Returns why a text is refused.
std::string TakeZeros(std::string& text)
{
    const std::size_t digits = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
    if (text.size() == digits || text.find_first_not_of("0123456789", digits) != std::string::npos)
        return Quoted(text) + " is not a whole number";
    text.erase(digits, std::min(text.find_first_not_of('0', digits), text.size() - 1) - digits);
    return {};
}

std::string WithoutShield(const std::string& text)
{
    return text.starts_with(kShield) ? text.substr(1) : text;
}

/// The arguments in the order in which the parser takes them: the last first.
std::vector<std::string> ReversedArguments(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments)
        if (argument.starts_with('[') || argument.starts_with(kShield))
            argument.insert(argument.begin(), kShield);
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

void AddOption(CLI::App& command, const OptionRow& row)
{
    CLI::Option* const option =
        std::visit([&](const auto& value) { return AddToParser(command, row, value); }, row.value);
    option->required(row.required);
    if (IsNumber(row)) // transformations run the last one first
        option->transform(CLI::Validator(TakeZeros, ""));
    if (!IsFlag(row))
    {
        option->transform(CLI::Validator(
            [](std::string& text)
            {
                text = WithoutShield(text);
                return std::string();
            },
            ""));
    }
    if (row.excludes != nullptr)
        option->excludes(command.get_option(row.excludes));
    if (row.check)
    {
        option->check(
            CLI::Validator([check = row.check](const std::string& text) { return check(text); }, ""));
    }
    if (!row.one_of.empty())
        option->check(CLI::IsMember(row.one_of));
    if (row.range)
        option->check(CLI::Range(row.range->first, row.range->second));
    if (row.show_default)
        option->capture_default_str();
}

std::string FooterOf(const VerbRow& row)
{
    std::string footer = "Examples:";
    std::istringstream examples{std::string(row.examples)};
    for (std::string line; std::getline(examples, line);)
        footer += "\n  " + line;
    return footer + (row.remarks.empty() ? "" : "\n") + std::string(row.remarks);
}

/// A verb that the arguments name, and its options, which set its members and `common`.
struct NamedVerb
{
    CLI::App* command = nullptr;
    VerbRow row;
    std::unique_ptr<Verb> verb;
    std::unique_ptr<CommonOptions> common;
    std::vector<OptionRow> options;
};

NamedVerb DeclareOptions(CLI::App& command, const VerbRow& row)
{
    NamedVerb named{&command, row, row.make(), std::make_unique<CommonOptions>(), {}};
    named.options = AllOptions(row, *named.verb, *named.common);
    for (const OptionRow& option : named.options)
        AddOption(command, option);
    command.footer(FooterOf(row));
    return named;
}

/// The names of the options that were given.
std::set<std::string> GivenOptions(const CLI::App& command)
{
    std::set<std::string> given;
    for (const CLI::Option* const option : command.get_options())
        if (option->count() > 0)
            given.insert(option->get_name());
    return given;
}

/// An option's argument with one text of its results; flags have "true" or "false".
std::vector<std::string> ArgumentsFor(const CLI::Option& option, const std::string& text)
{
    const std::string name = option.get_name();
    const bool flag = option.get_items_expected_max() == 0;
    if (flag && text == "true")
        return {name};
    if (flag && text == "false" && option.get_lnames().size() > 1) // --flag,!--no-flag
        return {"--" + option.get_lnames().back()};
    if (text.empty() || !name.starts_with("--"))
        return {name, text};
    return {name + "=" + text};
}

/// Every occurrence of an option: those of the configuration file, then those of the command line.
std::vector<GivenOption> OptionsInOrder(const CLI::App& command, const std::vector<CLI::Option*>& from_file)
{
    std::vector<const CLI::Option*> order;
    for (const CLI::Option* const option : from_file)
        order.insert(order.end(), option->count(), option);
    order.insert(order.end(), command.parse_order().begin(), command.parse_order().end());
    std::vector<GivenOption> given;
    std::map<const CLI::Option*, std::size_t> used; // results of an option
    for (const CLI::Option* const option : order)
    {
        const std::string name = option->get_name();
        if (option->nonpositional() && name != "--config")
            given.push_back({name, ArgumentsFor(*option, option->results()[used[option]++])});
    }
    return given;
}

/// Whether a flag is to be as it is without it.
bool SaysNothing(const CLI::Option& option, const ConfigOption& from_file)
{
    const bool flag = option.get_items_expected_max() == 0;
    return from_file.texts.empty() ||
           (flag && option.get_lnames().size() == 1 && from_file.texts.front() == "false");
}

/// Sets options from a configuration file. Those that were given already stay as they are, and so do those that one of
/// these excludes. Returns what was set. Throws a CLI::Error.
std::vector<CLI::Option*> ApplyConfig(CLI::App& command, const std::vector<ConfigOption>& file)
{
    const auto is_given = [](const CLI::Option* option) { return option->count() > 0; };
    std::vector<std::pair<CLI::Option*, const ConfigOption*>> wanted;
    for (const ConfigOption& from_file : file)
    {
        CLI::Option* const option = command.get_option(from_file.name);
        const std::set<CLI::Option*> excluded = option->get_excludes();
        if (!SaysNothing(*option, from_file) && !is_given(option) &&
            std::none_of(excluded.begin(), excluded.end(), is_given))
            wanted.emplace_back(option, &from_file);
    }
    std::vector<CLI::Option*> set;
    for (const auto& [option, from_file] : wanted)
    {
        const std::set<CLI::Option*> excluded = option->get_excludes();
        const auto other = std::find_if(excluded.begin(), excluded.end(), is_given);
        if (other != excluded.end())
            throw CLI::Error("Excludes", from_file->place + ": " + option->get_name() + " excludes " +
                                             (*other)->get_name());
        try
        {
            option->add_result(from_file->texts);
            option->run_callback();
        }
        catch (const CLI::ParseError& error)
        {
            throw CLI::Error(error.get_name(), from_file->place + ": " + error.what());
        }
        set.push_back(option);
    }
    return set;
}

/// Reads the configuration file of a run, if it has one. Values that the command line overrides are checked, too.
/// Throws a CLI::Error.
std::vector<CLI::Option*> UseConfigFile(const NamedVerb& named)
{
    if (named.common->config.empty())
        return {};
    std::vector<ConfigOption> file;
    if (const TEV2_LOADER::Status read = ReadConfigFile(named.common->config, named.options, file); !read)
        throw CLI::Error("FileError", read.Reason());
    CLI::App alone;
    const NamedVerb only_file = DeclareOptions(alone, named.row);
    ApplyConfig(alone, file);
    return ApplyConfig(*named.command, file);
}

/// Answers --print-config.
void PrintConfig(const NamedVerb& named, std::ostream& out)
{
    std::map<std::string, std::vector<std::string>> given;
    for (const OptionRow& row : named.options)
    {
        const std::string name = NamesOf(row).front();
        const CLI::Option* const option = named.command->get_option(name);
        if (option->count() > 0)
            given[name] = option->results();
    }
    const std::unique_ptr<Verb> fresh = named.row.make();
    CommonOptions common;
    out << ConfigText(named.row.name, named.options, AllOptions(named.row, *fresh, common), given);
}

std::vector<std::string> OptionsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

/// The verbs of the program and, unless the first argument is one of them, those of the host. `error` says why the
/// latter cannot be loaded.
std::vector<VerbRow> VerbsFor(int argc, char** argv, std::string& error)
{
    std::vector<VerbRow> rows = Verbs();
    const bool own = argc < 2 || std::any_of(rows.begin(), rows.end(),
                                             [&](const VerbRow& row) { return row.name == argv[1]; });
    return own ? rows : AllVerbs(error);
}

/// Why the first argument is no command; empty when it is one, or an option.
std::string UnknownCommand(const std::vector<VerbRow>& rows, const std::string& host_error, int argc,
                           char** argv)
{
    if (argc < 2)
        return "which command? tv2 --help lists them";
    const std::string first = argv[1];
    std::vector<std::string> names(rows.size());
    std::transform(rows.begin(), rows.end(), names.begin(), [](const VerbRow& row) { return row.name; });
    if (first.starts_with('-') || std::find(names.begin(), names.end(), first) != names.end())
        return {};
    return "there is no command \"" + first + '"' +
           (host_error.empty() ? DidYouMean(first, names) : ": " + host_error);
}

/// The parser's message, or a clearer one.
std::string Complaint(const CLI::App& command, const CLI::ParseError& error)
{
    const std::vector<std::string> unexpected = command.remaining();
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError) || unexpected.empty())
        return error.what();
    const auto option = std::find_if(unexpected.begin(), unexpected.end(),
                                     [](const std::string& text) { return text.starts_with('-'); });
    if (option == unexpected.end())
        return "one argument too many: \"" + WithoutShield(unexpected.front()) + '"';
    const std::string& first = *option;
    const std::string name = first.substr(0, first.find('='));
    return "there is no option " + name + DidYouMean(name, OptionsOf(command));
}

/// The error for an option without its value, as in `--fps=`, where the parser would use the next argument. Empty when
/// there is none.
std::string MissingValue(const CLI::App& app, int argc, char** argv)
{
    const std::vector<const CLI::App*> commands =
        app.get_subcommands([&](const CLI::App* verb) { return argc > 1 && verb->get_name() == argv[1]; });
    for (int i = 2; !commands.empty() && i < argc && std::string_view(argv[i]) != "--"; ++i)
    {
        const std::string argument = argv[i];
        const std::string name = argument.substr(0, argument.size() - 1);
        const CLI::Option* const option = argument.starts_with("--") && argument.ends_with('=')
                                              ? commands.front()->get_option_no_throw(name)
                                              : nullptr;
        if (option && option->get_items_expected_min() > 0)
            return name + " needs a value: there is none after its \"=\"";
    }
    return {};
}

bool WantsJson(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + std::max(argc, 1),
                       [](const char* argument) { return std::string_view(argument) == "--json"; });
}

/// Reports bad usage. `caller` is "tv2" or "tv2 info".
int Refuse(const std::string& caller, const std::string& why, int argc, char** argv)
{
    std::cerr << caller << ": " << Printable(why) << "\nRun with --help for more information.\n";
    if (WantsJson(argc, argv))
        std::cout << JsonAnswer(Json{{"error", why}}) << std::flush;
    return kExitCouldNotRun;
}

/// The exit code of a run that could not print its output. Files that it wrote are complete.
int OutputWasLost(bool files_were_written)
{
    std::cerr << "tv2: the output could not be written"
              << (files_were_written
                      ? "; files that were asked for are as they should be unless said otherwise"
                      : "")
              << '\n';
    return files_were_written ? kExitFindings : kExitCouldNotRun;
}

void SetUpParser(CLI::App& app)
{
    app.formatter(std::make_shared<FittedHelp>());
    app.set_version_flag("--version", "tv2 " TV2_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // "/takes/walk.bvh" is a path there, too
    app.footer("Each command has its own help: tv2 info --help\n"
               "Exit code: 0: success; 1: finished, but with problems; 2: could not start.");
}

/// Adds all verbs to the parser; only those that the arguments name get options.
std::vector<NamedVerb> AddVerbs(CLI::App& app, const std::vector<VerbRow>& rows, int argc, char** argv)
{
    std::vector<NamedVerb> named;
    for (const VerbRow& row : rows)
    {
        CLI::App* const command = app.add_subcommand(std::string(row.name), std::string(row.help));
        command->group(row.hidden ? "" : "Commands");
        if (std::find(argv + 1, argv + argc, row.name) != argv + argc)
            named.push_back(DeclareOptions(*command, row));
    }
    return named;
}

/// Parses the arguments; --print-config needs no others. Throws a CLI::Error.
void Parse(CLI::App& app, const std::vector<NamedVerb>& named, int argc, char** argv)
{
    try
    {
        app.parse(ReversedArguments(argc, argv));
    }
    catch (const CLI::RequiredError&)
    {
        const auto print = std::find_if(named.begin(), named.end(),
                                        [](const NamedVerb& verb) { return verb.common->print_config; });
        if (print == named.end())
            throw;
        for (CLI::Option* const option : print->command->get_options({}))
            option->required(false);
        app.parse(ReversedArguments(argc, argv));
    }
}

/// Runs the verb that was parsed.
int RunVerb(const NamedVerb& named, VerbContext& context, int argc, char** argv)
{
    const std::string caller = "tv2 " + named.command->get_name();
    context.verb = named.row.name;
    context.json = named.common->json;
    std::vector<CLI::Option*> from_file;
    try
    {
        from_file = UseConfigFile(named);
    }
    catch (const CLI::Error& error)
    {
        return Refuse(caller, error.what(), argc, argv);
    }
    if (named.common->print_config)
    {
        PrintConfig(named, context.out);
        return std::cout.flush() ? kExitDone : OutputWasLost(false);
    }
    context.given = OptionsInOrder(*named.command, from_file);
    if (const std::string why = named.verb->Refusal(GivenOptions(*named.command)); !why.empty())
        return Refuse(caller, why, argc, argv);
    named.verb->Run(context);
    return std::cout.flush() ? context.exit_code
                             : OutputWasLost(named.row.writes_files && context.exit_code != kExitCouldNotRun);
}

} // namespace

int RunCommandLine(int argc, char** argv)
{
    KeepStandardStreams();
    std::ios::sync_with_stdio(false);
    VerbContext context{{}, std::cout, std::cerr};
    std::string host_error;
    const std::vector<VerbRow> rows = VerbsFor(argc, argv, host_error);
    if (const std::string why = UnknownCommand(rows, host_error, argc, argv); !why.empty())
        return Refuse("tv2", why, argc, argv);
    if (!host_error.empty())
        std::cerr << "tv2: " << Printable(host_error) << '\n';
    CLI::App app("Inspects, validates, draws and makes .tv2 scene files.", "tv2");
    SetUpParser(app);
    const std::vector<NamedVerb> named = AddVerbs(app, rows, argc, argv);
    if (const std::string why = MissingValue(app, argc, argv); !why.empty())
        return Refuse("tv2 " + std::string(argv[1]), why, argc, argv);
    try
    {
        Parse(app, named, argc, argv);
    }
    catch (const CLI::Success& wish) // help or version
    {
        app.exit(wish, std::cout, std::cerr);
        return std::cout.flush() ? kExitDone : OutputWasLost(false);
    }
    catch (const CLI::ParseError& error)
    {
        const std::vector<CLI::App*> commands = app.get_subcommands();
        const CLI::App& command = commands.empty() ? app : *commands.front();
        return Refuse(commands.empty() ? "tv2" : "tv2 " + command.get_name(), Complaint(command, error), argc,
                      argv);
    }
    const auto parsed =
        std::find_if(named.begin(), named.end(),
                     [&](const NamedVerb& verb) { return verb.command == app.get_subcommands().front(); });
    return RunVerb(*parsed, context, argc, argv);
}

} // namespace tv2
