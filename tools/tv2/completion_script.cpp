#include "tools/tv2/completion_script.h"

#include <algorithm>
#include <sstream>

namespace tv2
{

namespace
{

constexpr const char* kBegin = R"bash(# Completion of tv2 for bash.

_tv2()
{
    local cur prev words cword split verb options="" values="" files=""
    _init_completion -s || return
    verb=${words[1]}
    if ((cword == 1)); then
        COMPREPLY=($(compgen -W "@VERBS --help --version" -- "$cur"))
        return
    fi
    case $verb in
)bash";

constexpr const char* kEnd = R"bash(    *) return ;;
    esac
    if [[ $values ]]; then
        COMPREPLY=($(compgen -W "$values" -- "$cur"))
    elif [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ $files == / ]]; then
        _filedir -d
    elif [[ $files == "*" ]]; then
        _filedir
    elif [[ $files ]]; then
        _filedir "@($files)"
    fi
} &&
    complete -F _tv2 tv2
)bash";

/// ".tv2 .glb" as "tv2|glb"
std::string Pattern(const std::string& files)
{
    std::istringstream words(files);
    std::string pattern;
    for (std::string word; words >> word;)
        pattern += (pattern.empty() ? "" : "|") + (word.starts_with('.') ? word.substr(1) : word);
    return pattern;
}

std::string Joined(const std::vector<std::string>& words, const std::string& between)
{
    std::string joined;
    for (const std::string& word : words)
        joined += (joined.empty() ? "" : between) + word;
    return joined;
}

/// The branch of an option that takes a value.
std::string ValueBranch(const OptionRow& row)
{
    std::string branch = "        " + Joined(NamesOf(row), " | ") + ") ";
    if (!row.files.empty())
        return branch + "files=\"" + Pattern(row.files) + "\" ;;\n";
    return branch + (row.one_of.empty() ? "return" : "values=\"" + Joined(row.one_of, " ") + "\"") + " ;;\n";
}

std::string VerbBranch(const VerbRow& row)
{
    const std::unique_ptr<Verb> verb = row.make();
    CommonOptions common;
    std::vector<std::string> names = {"--help"};
    std::vector<std::string> patterns; // of the files that are arguments
    std::string branches;
    for (const OptionRow& option : AllOptions(row, *verb, common))
    {
        if (!IsOption(option))
        {
            const std::string pattern = Pattern(option.files);
            if (!pattern.empty() && std::find(patterns.begin(), patterns.end(), pattern) == patterns.end())
                patterns.push_back(pattern);
            continue;
        }
        for (const std::string& name : NamesOf(option))
            names.push_back(name);
        if (!IsFlag(option))
            branches += ValueBranch(option);
    }
    return "    " + std::string(row.name) + ")\n        options=\"" + Joined(names, " ") +
           "\"\n        files=\"" + Joined(patterns, "|") + "\"\n        case $prev in\n" + branches +
           "        esac\n        ;;\n";
}

} // namespace

std::string CompletionScript(const std::vector<VerbRow>& rows)
{
    std::vector<std::string> verbs(rows.size());
    std::transform(rows.begin(), rows.end(), verbs.begin(),
                   [](const VerbRow& row) { return std::string(row.name); });
    std::string script = kBegin;
    constexpr std::string_view kVerbs = "@VERBS";
    script.replace(script.find(kVerbs), kVerbs.size(), Joined(verbs, " "));
    for (const VerbRow& row : rows)
        script += VerbBranch(row);
    return script + kEnd;
}

} // namespace tv2
