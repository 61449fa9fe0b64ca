#pragma once

#include "tev2_loader/records/object_bases.h"

namespace TEV2_LOADER
{

/// A base that placed classes still carry; it has no record.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the format's
class UNUSED__TEV2_SCALED_OBJECT : public TEV2_SERIALISABLE_OBJECT
{
};

} // namespace TEV2_LOADER
