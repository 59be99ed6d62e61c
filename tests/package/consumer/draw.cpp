#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// A host program as others write it: it draws SCRIPT, checks what came of it, and prints the library's
// version. MAKER says whose message service it must find below the library: "own" or "reference".

namespace {

int failures = 0;

template<class Value, class Expected>
void expectEqual(const char* what, const Value& value, const Expected& expected)
{
    if (value == expected) return;
    ++failures;
    std::cerr << what << ": expected " << expected << ", have " << value << '\n';
}

std::string draw(QuorGlibScriptor& scriptor, const char* segment)
{
    std::vector<QuorPrimary*> primitives;
    expectEqual("status of the segment", scriptor.callSeg3D(segment, primitives), Quor::GlibStatus::Ok);
    std::ostringstream text;
    for (QuorPrimary* primitive : primitives) {
        const std::unique_ptr<QuorPrimary> owned(primitive);
        text << *owned << '\n';
    }
    return text.str();
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3) return 2;
    QuorGlibScriptor scriptor;
    expectEqual("status of the script", scriptor.loadFile(arguments[1], false), Quor::GlibStatus::Ok);
    expectEqual("parameter written",
                scriptor.setKeyValues({{"P1", "face to face", KVValue::ofDouble(203.0)}}, 2.0), true);
    expectEqual(
        "drawing", draw(scriptor, "main"),
        "createQuorGraphy3DCylinder((-203, 0, 0), (203, 0, 0), 25, 32, false) color=5 material=\"steel\"\n");

    std::vector<QuorPrimary*> none;
    expectEqual("status of a failure", scriptor.callSeg3D("broken", none), Quor::GlibStatus::ScriptFailed);
    expectEqual("code of a failure", kxcom::getQuorLastErrorCode(), 2003);
    const std::string text = kxcom::getQuorLastErrorText();
    expectEqual("message service", text.starts_with("own: ") ? "own" : "reference",
                std::string(arguments[2]));

    expectEqual("version", std::string(Quor::version()), QUORSCRIPTOR_VERSION);
    expectEqual("version number", Quor::versionNumber(), QUORSCRIPTOR_VERSION_NUMBER);
    std::cout << Quor::version() << '\n';
    return failures == 0 ? 0 : 1;
}
