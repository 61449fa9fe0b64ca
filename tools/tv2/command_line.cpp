#include "tools/tv2/command_line.h"

#include "exporter/rules/sampling_rate.h"
#include "host/import/import_options.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "text/closest_name.h"
#include "tools/tv2/json.h"
#include "tools/tv2/system.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

// All that the parser sees, in one place: its header takes longer to compile than the rest of the command.

namespace
{

constexpr std::size_t kLeastColumns = 60;
constexpr std::size_t kMostColumns = 100;

/// Help that fits the terminal.
class FittedHelp : public CLI::Formatter
{
public:
    explicit FittedHelp(std::size_t columns) : columns_(columns)
    {
        label("SUBCOMMAND", "COMMAND");
        label("Subcommand", "Command");
    }

    std::string make_option(const CLI::Option* option, bool is_positional) const override
    {
        std::string name = make_option_name(option, is_positional);
        if (name.find("{false}") != std::string::npos) // --flag,--no-flag{false}
        {
            name = "--[no-]" + option->get_lnames().front();
        }
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

/// Why the options of the command line do not go with the dialog; empty when they do.
std::string OptionsOfTheDialog(const CLI::App& verb)
{
    for (const char* const name :
         {"--fps", "--start-frame", "--end-frame", "--all-takes", "--spaces-to-underscores",
          "--keep-positive-z", "--remove-namespace", "--disable-constraints"})
    {
        if (verb.get_option(name)->count() > 0)
        {
            return std::string(name) + " is decided in the dialog: leave it out, or leave the dialog out";
        }
    }
    return {};
}

void AddSceneFile(CLI::App& verb, std::string& path)
{
    const CLI::Validator is_a_file(
        [](const std::string& value)
        {
            return value == kStandardInput
                       ? std::string(
                             "a scene cannot be read from standard input, since its name and folder go "
                             "into the export and other files may belong to it: save it to a file "
                             "(./- is a file of the name -)")
                       : std::string();
        },
        "");
    verb.add_option("SCENE", path, "The scene file")->required()->check(is_a_file);
}

/// The transport rate of the scene, for formats that state none.
void AddSceneRate(CLI::App& verb, double& rate)
{
    verb.add_option_function<std::string>(
        "--scene-rate",
        [&rate](const std::string& text)
        {
            const std::optional<double> number = tev2_exporter::RateOfText(text, 0.0);
            if (!number || !(*number > 0.0) || *number > mobu_host::kHighestRate)
            {
                throw CLI::ValidationError(
                    "--scene-rate", "needs a rate above 0 and up to " +
                                        CountText(static_cast<std::uint64_t>(mobu_host::kHighestRate)) +
                                        ": 24, 29.97, 30000/1001");
            }
            rate = *number;
        },
        "Frames a second of the scene, which its takes and --start-frame are counted in (default: what the "
        "file "
        "states; where it states none, the lowest common rate that fits all keys)");
}

void AddExportVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<ExportVerbOptions>();
    ExportRequest& request = options->request;
    CLI::App* verb = app.add_subcommand("export", "Exports a scene (FBX, BVH, glTF, Collada) to .tv2 files");
    AddSceneFile(*verb, request.scene);
    verb->add_option("OUTPUT", request.output,
                     "The file to write, ending in .tv2; with --all-takes the pattern of the names: "
                     "out.tv2 gives out_<take>.tv2, a bare .tv2 gives <take>.tv2")
        ->required();
    const CLI::Validator given(
        [](const std::string& value) { return value.empty() ? std::string("is empty") : std::string(); }, "");
    verb->add_option("--fps", request.rate,
                     std::string("Samples a second (default: scene, the scene's transport rate): ") +
                         tev2_exporter::kRatesThatAreUnderstood)
        ->check(given);
    AddSceneRate(*verb, request.scene_rate);
    verb->add_option("--start-frame", request.start_frame,
                     "First frame, counted at the transport rate (default: of the take)")
        ->check(given);
    verb->add_option("--end-frame", request.end_frame,
                     "Last frame, counted at the transport rate (default: of the take)")
        ->check(given);
    CLI::Option* take = verb->add_option("--take", request.take,
                                         "Export this take (default: the one that is current in the scene)")
                            ->check(given);
    verb->add_flag("--all-takes", request.all_takes, "Export every take, each to a file of its own")
        ->excludes(take);
    verb->add_option("--select", request.select,
                     "Export this model and what is below it, by its long name; may be given more than once "
                     "(default: the whole scene)")
        ->allow_extra_args(false)
        ->option_text("TEXT");
    verb->add_flag("--spaces-to-underscores,!--no-spaces-to-underscores", request.spaces_to_underscores,
                   "Replace spaces in file names (on)");
    verb->add_flag("--keep-positive-z,!--no-keep-positive-z", request.keep_positive_z,
                   "Turn the scene so that its Z axis keeps its sign (on)");
    verb->add_flag("--remove-namespace,!--no-remove-namespace", request.remove_namespace,
                   "Write node names without their namespaces (on)");
    verb->add_flag("--disable-constraints,!--no-disable-constraints", request.disable_constraints,
                   "Export with constraints inactive (off)");
    verb->add_flag("--yes", request.overwrite_read_only, "Over-write read-only files without asking");
    verb->add_option("--plugin", options->plugin,
                     "The exporter's module (default: the one beside this command)");
    verb->add_flag("--dialog", options->dialog,
                   "Ask for the options as MotionBuilder does: in the exporter's own dialog, which "
                   "remembers them");
    verb->add_option("--dialog-script", options->dialog_script,
                     "Play the steps of this file to the dialog instead of showing it: click \"REGION\", set "
                     "\"REGION\" on|off, edit \"REGION\" NUMBER, move LEFT TOP, close")
        ->check(given);
    verb->add_option(
            "--settings", options->settings,
            "Where the dialog's settings come from and go to: \"stored\" are those of the last time, "
            "\"none\" are the defaults, and nothing is stored (default: stored for --dialog, none for "
            "--dialog-script)")
        ->check(CLI::IsMember({"stored", "none"}));
    verb->add_flag("--quiet", options->quiet, "Print nothing but errors");
    verb->add_flag("--json", options->json,
                   "Print JSON: an object with one entry of \"files\" for each file");
    verb->footer(
        "Examples:\n"
        "  tv2 export walk.bvh walk.tv2\n"
        "  tv2 export --all-takes --fps 60 robot.glb robot.tv2\n"
        "  tv2 export --select Hips --start-frame 10 --end-frame 60 walk.bvh hips.tv2\n"
        "  tv2 export --dialog --take Dance robot.glb dance.tv2\n"
        "  tv2 export --dialog-script steps.txt robot.glb robot.tv2\n"
        "A file counts as exported when it has been read back whole. Exit code: 0: every file was; 1: at "
        "least "
        "one was not, or was skipped as read-only, or the dialog was cancelled; 2: nothing was started.");
    verb->callback(
        [options, verb, &context]
        {
            options->dialog = options->dialog || !options->dialog_script.empty();
            if (options->dialog)
            {
                options->refusal = OptionsOfTheDialog(*verb);
            }
            else if (!options->settings.empty())
            {
                options->refusal = "--settings are the dialog's: give --dialog or --dialog-script as well";
            }
            RunExport(*options, context);
        });
}

void AddSceneVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<SceneVerbOptions>();
    CLI::App* verb =
        app.add_subcommand("scene", "What the exporter sees of a scene (FBX, BVH, glTF, Collada)");
    AddSceneFile(*verb, options->scene);
    AddSceneRate(*verb, options->scene_rate);
    verb->add_flag("--json", options->json,
                   "Print JSON; positions are those of the first frame, in centimetres");
    verb->footer("Examples:\n"
                 "  tv2 scene walk.bvh\n"
                 "  tv2 scene --json robot.glb | jq '.takes[].name'");
    verb->callback([options, &context] { RunScene(*options, context); });
}

void AddMenuVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<MenuVerbOptions>();
    CLI::App* verb = app.add_subcommand("menu", "What the exporter adds to MotionBuilder's file menu");
    verb->add_option("--plugin", options->plugin,
                     "The exporter's module (default: the one beside this command)");
    verb->add_flag("--json", options->json, "Print JSON");
    verb->footer("Examples:\n"
                 "  tv2 menu\n"
                 "  tv2 menu --json | jq -r '.entries[].extension'\n"
                 "An entry is used with tv2 export --dialog.");
    verb->callback([options, &context] { RunMenu(*options, context); });
}

void AddInfoVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<InfoOptions>();
    CLI::App* verb = app.add_subcommand("info", "What a file holds, on one screen");
    verb->add_option("FILE", options->files, "The .tv2 files; - is standard input")->required();
    verb->add_flag("--json", options->json,
                   "Print JSON: an object with one entry of \"files\" for each file");
    verb->footer("Examples:\n"
                 "  tv2 info walk.tv2\n"
                 "  tv2 info --json takes/*.tv2 | jq '.files[].nodes'");
    verb->callback([options, &context] { RunInfo(*options, context); });
}

void AddDumpVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<DumpOptions>();
    CLI::App* verb = app.add_subcommand("dump", "Everything in a file, as an indented tree or as JSON");
    verb->add_option("FILE", options->file, "The .tv2 file; - is standard input")->required();
    CLI::Option* const keys =
        verb->add_option("--keys", options->keys,
                         "Tree: print at most this many keys of a track, and lines of bytes of a body")
            ->check(CLI::Validator([](const std::string& value)
                                   { return value.starts_with('-') ? "is below 0" : std::string(); },
                                   ""));
    verb->add_flag("--json", options->json, "Print JSON with every value")->excludes(keys);
    verb->footer("Numbers are single precision, in the shortest form that reads back to the same bits.\n"
                 "In JSON non-finite numbers are strings: \"NaN\", \"NaN(0xffc00001)\", \"Infinity\".\n"
                 "Examples:\n"
                 "  tv2 dump --keys 3 walk.tv2\n"
                 "  tv2 dump --json walk.tv2 | jq '.matrixHierarchy.nodes[].name'");
    verb->callback([options, &context] { RunDump(*options, context); });
}

void AddCheckVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<CheckOptions>();
    CLI::App* verb = app.add_subcommand("check", "All that is wrong with a file, or looks wrong");
    verb->add_option("FILE", options->files, "The .tv2 files; - is standard input");
    verb->add_flag("--codes", options->codes, "List all codes, each with a sentence, and do nothing else");
    verb->add_flag("--all", options->all, "Show every finding, however many there are of one code");
    verb->add_flag("--json", options->json,
                   "Print JSON: an object with one entry of \"files\" for each file");
    verb->footer("Exit code: 0 for files without errors and warnings (notes do not count), 1 otherwise, "
                 "2 when a file cannot be read.\n"
                 "Examples:\n"
                 "  tv2 check takes/*.tv2\n"
                 "  tv2 check --json walk.tv2 | jq -r '.files[].findings[].code'\n"
                 "  tv2 check --codes");
    verb->callback(
        [options, &context]
        {
            if (options->files.empty() && !options->codes)
            {
                throw CLI::RequiredError("FILE");
            }
            RunCheck(*options, context);
        });
}

void AddPictureVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<PictureOptions>();
    CLI::App* verb = app.add_subcommand(
        "picture", "Skeletons, cameras and other models at several instants, as an SVG drawing");
    verb->add_option("FILE", options->file, "The .tv2 file; - is standard input")->required();
    verb->add_option("OUTPUT.svg", options->output, "The drawing, ending in .svg; - is standard output")
        ->required();
    verb->add_option("--figures", options->figures,
                     "How many instants, spread over the time range (one where nothing moves)")
        ->check(CLI::Range(1, 50))
        ->capture_default_str();
    verb->add_option("--view", options->view, "From where to look")
        ->check(CLI::IsMember({"front", "side", "top"}))
        ->capture_default_str();
    verb->add_flag("--json", options->json, "Print JSON: the file, the drawing and its number of figures");
    verb->footer("Examples:\n"
                 "  tv2 picture walk.tv2 walk.svg\n"
                 "  tv2 picture --view side --figures 12 walk.tv2 walk.svg");
    verb->callback([options, &context] { RunPicture(*options, context); });
}

using AddVerb = void (*)(CLI::App&, VerbContext&);

/// In the order in which the help lists them.
constexpr AddVerb kVerbs[] = {
    AddExportVerb, AddSceneVerb, AddMenuVerb, AddInfoVerb, AddDumpVerb, AddCheckVerb, AddPictureVerb,
};

std::vector<std::string> NamesOf(const std::vector<const CLI::App*>& commands)
{
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CLI::App* const command : commands)
    {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> OptionsOf(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* const option : command.get_options())
    {
        for (const std::string& name : option->get_lnames())
        {
            names.push_back("--" + name);
        }
    }
    return names;
}

/// Why the first argument is no command; empty when it is one, or an option.
std::string UnknownCommand(const CLI::App& app, int argc, char** argv)
{
    if (argc < 2)
    {
        return "which command? tv2 --help lists them";
    }
    const std::string first = argv[1];
    const std::vector<std::string> names = NamesOf(app.get_subcommands([](const CLI::App*) { return true; }));
    if (first.starts_with('-') || std::find(names.begin(), names.end(), first) != names.end())
    {
        return {};
    }
    return "there is no command \"" + first + '"' + DidYouMean(first, names);
}

/// What the parser complains of, in its words or better ones.
std::string Complaint(const CLI::App& command, const CLI::ParseError& error)
{
    const std::vector<std::string> unexpected = command.remaining();
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError) || unexpected.empty())
    {
        return error.what();
    }
    const auto option = std::find_if(unexpected.begin(), unexpected.end(),
                                     [](const std::string& text) { return text.starts_with('-'); });
    if (option == unexpected.end())
    {
        return "one argument too many: \"" + unexpected.front() + '"';
    }
    const std::string& first = *option;
    const std::string name = first.substr(0, first.find('='));
    return "there is no option " + name + DidYouMean(name, OptionsOf(command));
}

/// Why an option's value is missing, as in `--fps=`: the parser would take the next argument for it. Empty when none is.
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
        {
            return name + " needs a value: there is none after its \"=\"";
        }
    }
    return {};
}

bool WantsJson(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + std::max(argc, 1),
                       [](const char* argument) { return std::string_view(argument) == "--json"; });
}

/// Bad usage. `caller` is "tv2" or "tv2 info".
int Refuse(const std::string& caller, const std::string& why, int argc, char** argv)
{
    std::cerr << caller << ": " << Printable(why) << "\nRun with --help for more information.\n";
    if (WantsJson(argc, argv))
    {
        std::cout << JsonText(Json{{"error", why}}) << '\n' << std::flush;
    }
    return kExitCouldNotRun;
}

/// The exit code of a run whose output was not taken. What it wrote to files is whole all the same.
int OutputWasLost(const CLI::App& app, int exit_code)
{
    const std::vector<CLI::App*> commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : commands.front()->get_name();
    const bool writes_files = (command == "export" || command == "picture") && exit_code != kExitCouldNotRun;
    std::cerr << "tv2: the output could not be written"
              << (writes_files ? "; files that were asked for are as they should be unless said otherwise"
                               : "")
              << '\n';
    return writes_files ? kExitFindings : kExitCouldNotRun;
}

} // namespace

int RunCommandLine(int argc, char** argv)
{
    KeepStandardStreams();
    std::ios::sync_with_stdio(false);
    VerbContext context{std::cout, std::cerr};

    CLI::App app("Looks at, checks and makes .tv2 scene files.", "tv2");
    app.formatter(std::make_shared<FittedHelp>(
        std::clamp(TerminalColumns(Stream::kOutput), kLeastColumns, kMostColumns)));
    app.set_version_flag("--version", "tv2 " TV2_VERSION);
    app.require_subcommand(1);
    app.footer("Each command has its own help: tv2 info --help\n"
               "Exit code: 0: success; 1: finished, but with problems; 2: could not start.");
    for (const AddVerb add_verb : kVerbs)
    {
        add_verb(app, context);
    }
    for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
    {
        command->group("Commands");
    }

    if (const std::string why = UnknownCommand(app, argc, argv); !why.empty())
    {
        return Refuse("tv2", why, argc, argv);
    }
    if (const std::string why = MissingValue(app, argc, argv); !why.empty())
    {
        return Refuse("tv2 " + std::string(argv[1]), why, argc, argv);
    }
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& wish) // help or version
    {
        app.exit(wish, std::cout, std::cerr);
        return std::cout.flush() ? kExitDone : OutputWasLost(app, kExitDone);
    }
    catch (const CLI::ParseError& error)
    {
        const std::vector<CLI::App*> commands = app.get_subcommands();
        const CLI::App& command = commands.empty() ? app : *commands.front();
        return Refuse(commands.empty() ? "tv2" : "tv2 " + command.get_name(), Complaint(command, error), argc,
                      argv);
    }
    return std::cout.flush() ? context.exit_code : OutputWasLost(app, context.exit_code);
}
