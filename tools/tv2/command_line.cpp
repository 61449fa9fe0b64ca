#include "tools/tv2/command_line.h"

#include "text/closest_name.h"
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

// All that the parser sees, in one place: its header takes longer to compile than the rest of the command.

namespace tv2
{

namespace
{

CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, bool* flag)
{
    constexpr std::string_view kEitherWay = "--[no-]";
    if (!row.name.starts_with(kEitherWay))
        return command.add_flag(row.name, *flag, row.help);
    const std::string name = row.name.substr(kEitherWay.size());
    return command.add_flag("--" + name + ",!--no-" + name, *flag, row.help);
}

CLI::Option* AddToParser(CLI::App& command, const OptionRow& row, std::vector<std::string>* texts)
{
    CLI::Option* const option = command.add_option(row.name, *texts, row.help);
    return row.name.starts_with('-') ? option->allow_extra_args(false)->option_text("TEXT") : option;
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

void AddOption(CLI::App& command, const OptionRow& row)
{
    CLI::Option* const option =
        std::visit([&](const auto& value) { return AddToParser(command, row, value); }, row.value);
    option->required(row.required);
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

/// Makes a verb and declares its options, which set its members.
std::unique_ptr<Verb> DeclareOptions(CLI::App& command, const VerbRow& row, VerbContext& context)
{
    std::unique_ptr<Verb> verb = row.make();
    command.add_flag("--json", context.json, std::string(row.json_help));
    for (const OptionRow& option : verb->Options())
        AddOption(command, option);
    command.footer(FooterOf(row));
    return verb;
}

/// The names of the options that the command line gave.
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

std::vector<GivenOption> OptionsInOrder(const CLI::App& command)
{
    std::vector<GivenOption> given;
    std::map<const CLI::Option*, std::size_t> used; // results of an option
    for (const CLI::Option* const option : command.parse_order())
        if (option->nonpositional())
            given.push_back({option->get_name(), ArgumentsFor(*option, option->results()[used[option]++])});
    return given;
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
    if (argc > 1 &&
        std::none_of(rows.begin(), rows.end(), [&](const VerbRow& row) { return row.name == argv[1]; }))
    {
        const std::vector<VerbRow> more = HostVerbs(error);
        rows.insert(rows.end(), more.begin(), more.end());
        std::sort(rows.begin(), rows.end(),
                  [](const VerbRow& a, const VerbRow& b) { return a.place < b.place; });
    }
    return rows;
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
        return "one argument too many: \"" + unexpected.front() + '"';
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
    app.footer("Each command has its own help: tv2 info --help\n"
               "Exit code: 0: success; 1: finished, but with problems; 2: could not start.");
}

/// A verb that the arguments name.
struct NamedVerb
{
    CLI::App* command = nullptr;
    VerbRow row;
    std::unique_ptr<Verb> verb;
};

/// Adds all verbs to the parser; only those that the arguments name get options.
std::vector<NamedVerb> AddVerbs(CLI::App& app, const std::vector<VerbRow>& rows, int argc, char** argv,
                                VerbContext& context)
{
    std::vector<NamedVerb> named;
    for (const VerbRow& row : rows)
    {
        CLI::App* const command = app.add_subcommand(std::string(row.name), std::string(row.help));
        command->group("Commands");
        if (std::find(argv + 1, argv + argc, row.name) != argv + argc)
            named.push_back({command, row, DeclareOptions(*command, row, context)});
    }
    return named;
}

/// Runs the verb that was parsed.
int RunVerb(const CLI::App& app, const std::vector<NamedVerb>& named, VerbContext& context, int argc,
            char** argv)
{
    const CLI::App* const command = app.get_subcommands().front();
    const auto found = std::find_if(named.begin(), named.end(),
                                    [&](const NamedVerb& candidate) { return candidate.command == command; });
    context.verb = found->row.name;
    context.given = OptionsInOrder(*command);
    if (const std::string why = found->verb->Refusal(GivenOptions(*command)); !why.empty())
        return Refuse("tv2 " + command->get_name(), why, argc, argv);
    found->verb->Run(context);
    return std::cout.flush()
               ? context.exit_code
               : OutputWasLost(found->row.writes_files && context.exit_code != kExitCouldNotRun);
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
    const std::vector<NamedVerb> named = AddVerbs(app, rows, argc, argv, context);
    if (const std::string why = MissingValue(app, argc, argv); !why.empty())
        return Refuse("tv2 " + std::string(argv[1]), why, argc, argv);
    try
    {
        app.parse(argc, argv);
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
    return RunVerb(app, named, context, argc, argv);
}

} // namespace tv2
