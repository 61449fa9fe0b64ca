# Writes OUTPUT, a C++ source with the texts of viewer/embedded.h: the files of the folder PAGE, SCRIPTS one after
# another, and THREE. Lines end in LF, since hashes in the page are of its text with LF.

function(read_text variable file)
    file(READ ${file} text)
    string(REPLACE "\r" "" text "${text}")
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# A script ends at the first </script, wherever that is, and <!-- changes how it is read.
function(refuse_markup text file)
    string(TOLOWER "${text}" lower)
    foreach(markup "</script" "<!--")
        string(FIND "${lower}" "${markup}" place)
        if(NOT place EQUAL -1)
            message(FATAL_ERROR "${file} contains ${markup}, which a script in a page must not: write it in two parts")
        endif()
    endforeach()
endfunction()

# All scripts share one scope: of two functions with one name the later would silently take the place of the other.
function(refuse_repeated_names text script)
    string(REGEX MATCHALL "(^|\n)(async )?(function\\*?|class|const|let|var) +[A-Za-z0-9_$]+" declarations "${text}")
    foreach(declaration IN LISTS declarations)
        string(REGEX REPLACE "^.* " "" name "${declaration}")
        if(DEFINED script_of_${name})
            message(FATAL_ERROR "${script} declares ${name}, and so does ${script_of_${name}}")
        endif()
        set(script_of_${name} ${script})
        set(script_of_${name} ${script} PARENT_SCOPE)
    endforeach()
endfunction()

function(append_constant name text)
    file(APPEND ${OUTPUT}.part "const std::string_view ${name} = R\"embedded(${text})embedded\";\n\n")
endfunction()

file(WRITE ${OUTPUT}.part "// Written by viewer/embed.cmake.\n\n#include \"viewer/embedded.h\"\n\n"
     "#ifdef __clang__\n#pragma clang diagnostic ignored \"-Woverlength-strings\"\n#endif\n\n"
     "namespace tev2_viewer\n{\n\n")
read_text(text ${PAGE}/page.html)
append_constant(kPageTemplate "${text}")
read_text(text ${PAGE}/page.css)
append_constant(kPageStyle "${text}")
read_text(text ${PAGE}/three_licence.txt)
append_constant(kThreeLicence "${text}")
read_text(text ${THREE})
refuse_markup("${text}" ${THREE})
append_constant(kThreeScript "${text}")
set(all "")
foreach(script ${SCRIPTS})
    read_text(text ${script})
    refuse_markup("${text}" ${script})
    refuse_repeated_names("${text}" ${script})
    string(APPEND all "${text}")
endforeach()
append_constant(kPageScript "${all}")
file(APPEND ${OUTPUT}.part "} // namespace tev2_viewer\n")
file(RENAME ${OUTPUT}.part ${OUTPUT})
