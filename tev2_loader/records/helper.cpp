#include "tev2_loader/records/helper.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_HELPER>;

} // namespace TEV2_LOADER
