#include "tev2_loader/status.h"

#include <system_error>

namespace TEV2_LOADER
{

Status Status::FromErrno(int error)
{
    return error == 0 ? Status() : Failure(std::generic_category().message(error));
}

} // namespace TEV2_LOADER
