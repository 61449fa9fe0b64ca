// The module tv2_host_verbs: hands its verbs to the program.

#include "tools/tv2/verb.h"

extern "C" __attribute__((visibility("default"))) const std::vector<tv2::VerbRow>* tv2_host_verbs()
{
    static const std::vector<tv2::VerbRow> verbs = tv2::Verbs();
    return &verbs;
}
