// The block decoder on any JSON: a list of blocks (a JSON array) or one
// block (an object). It either fails with an error that names a real place
// in the document, or yields blocks that hold exactly what their objects say.
#include "fuzzing.h"
#include "jsoncheck.h"

#include "course/block.h"
#include "course/jsonreader.h"

using namespace Kestrun;
using namespace Kestrun::Fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QJsonValue root;
    try {
        root = JsonReader::parse(bytes(data, size));
    } catch (const JsonError &error) {
        FUZZ_CHECK(error.path().isEmpty() && error.problem().startsWith(QLatin1String("not valid JSON")),
                   error.message());
        return 0;
    }
    const JsonReader reader(root);
    try {
        if (root.isArray()) {
            checkBlocks(Block::decodeList(reader), root);
        } else {
            const Block block = Block::decode(reader);
            checkBlock(block, root.toObject());
        }
    } catch (const JsonError &error) {
        checkErrorPath(error.message(), root);
    }
    return 0;
}
