#include "tev2_loader/records/tri_sub_object.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_CARD32_TRIPLE>;
template struct TEV2_RECORD_CODE<TEV2_TRI_SUB_OBJECT>;

} // namespace TEV2_LOADER
