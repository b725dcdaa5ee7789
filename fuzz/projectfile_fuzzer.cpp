#include "koFuzzRoundTrip.h"
#include "koProjectFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QString folder = QStringLiteral("/project/parts");
    static const QString projectFolder = QStringLiteral("/project");
    return fuzzRoundTrip(
        data, size,
        [](const QByteArray& input, koSceneNodeDesc& root, QString* error) {
            return koProjectFile::parse(input, folder, root, error);
        },
        [](const koSceneNodeDesc& root) { return koProjectFile::serialize(root, folder, projectFolder); });
}
