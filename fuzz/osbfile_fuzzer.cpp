#include "koFuzzRoundTrip.h"
#include "koOsbFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzRoundTrip(data, size, &koOsbFile::parse, &koOsbFile::serialize);
}
