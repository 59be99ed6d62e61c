#include "Session.h"

#include <QuorCommon/QuorCommon.h>
#include <sstream>

const char* const componentScript = R"(
param = {number = 0, colour = 0, name = '', length = 0}
glb = {smrtlntype = 'PIPE'}
skey = {angleUnit = {'angle'}}

function main()
    glib.setpath()
    local name, number = param.name, param.number
    local at, view = glib.getIsoPoint(number), glib.getPsView()
    local matrix, style = glib.getNormalIsoMat(1, number), glib.getCurrentTxtstyle()
    style:setstyle(name)
    return {
        {300, param.colour}, {400, 'MATERIAL ' .. name}, {500, param.colour / 8}, {600, 'LINE ' .. name}, {700, 3},
        {16, at, {matrix[1][1], matrix[2][2], matrix[4][3]}},
        {40, {
            {10, at, param.length},
            {300, param.colour + 1},
            {40, {{19, 1, at, name, 0, 1, style:getlen(name)}}},
        }},
        {18, at, param.angle, glib.getIsoVgdir(number, 2)},
        {41, 2},
        {31, 'no ellipse'},
        {999},
        {200, {view = view}},
    }
end
function failing() kxcom.errorMsg('fails: ' .. param.name) error('no ' .. param.name, 0) end
function none() return param.number end
function keypoint() return {{1, param.number, glib.getPsView()}} end
function wants() return {needxdir = {param.number % 2 == 0, param.name}} end
function swap(a, b) return b, a end
function told(values, style) return {{19, 1, {values.x, 0, 0}, values.text, 0, 1, style:height()}} end
)";

const char* const layerScript = R"(
function none() return {{26, {1, 2, 3}, param.number}} end
)";

const char* const projectConfiguration = R"(
local who, version, database, kept = 'nobody', 'none', 'none', nil
function initConfig(text) who = text end
function setUserVersion(text) version = text end
function setDesignDbModule(text) database = text end
function getProjectSpec(module, name) return table.concat({who, version, database, module, name}, '/') end
function getProjectAttr(module, name) kxcom.errorMsg(who .. ' has no ' .. name) return '' end
function getProjectGlib(module) error(who .. ' has no library', 0) end
function getProjectPath(module, part, name)
    local before = kept
    if part == 'keep' then kept = name end
    return before
end
function getProjectUser() return kxcom.projectPath() .. '/' .. who end
function getProjectDbSeed(name) return #name end
function getDigitalFile(module, name) return name .. ' of ' .. who end
function isPropertyClass_full() return #who % 2 == 0 end
)";

const char* const systemConfiguration = R"(
local keys = 0
function initConfig() keys = 0 end
function escape_dbkey(key) return '<' .. key .. '>' end
function set_project_dbengine(engine) return engine == 1 end
)";

namespace {

// A pointer: not every compiler's library destroys an object of a thread while it is still there.
thread_local Listening* current = nullptr;

std::string tagOf(int number)
{
    return "thread " + std::to_string(number);
}

const char* orNull(const char* text)
{
    return text ? text : "(null)";
}

/// Notes what operations give, each under its name.
class Protocol {
public:
    template<class... Values>
    void note(const char* name, const Values&... values)
    {
        std::ostringstream line;
        line << name;
        ((line << ' ' << values), ...);
        lines.push_back(line.str());
    }
    void notePrimitives(Primitives& primitives)
    {
        for (const QuorPrimary* primitive : primitives)
            note("drawn", *primitive);
        primitives.free();
    }
    void noteLastError()
    {
        note("last error", kxcom::getQuorLastErrorCode(), utf8(kxcom::getQuorLastErrorText()));
        kxcom::clearQuorLastError();
    }
    void noteAnswer(const char* getter, const char* answer)
    {
        note(getter, orNull(answer), static_cast<int>(quorconfig::lastAnswerOrigin()));
    }

    Lines lines;
};

void drawOnce(Protocol& protocol, QuorGlibScriptor& scriptor, int number)
{
    Primitives primitives;
    protocol.note("main", scriptor.callSeg3D("main", primitives));
    protocol.notePrimitives(primitives);

    protocol.note("failing", scriptor.callSeg("failing"));
    protocol.noteLastError();
    protocol.note("none", scriptor.callSeg("none", primitives));
    protocol.notePrimitives(primitives);
    protocol.noteLastError();

    std::vector<Keypoint> keypoints;
    protocol.note("keypoints", scriptor.getKeypoints(keypoints));
    for (const Keypoint& keypoint : keypoints)
        protocol.note("keypoint", keypoint.first, keypoint.second);

    int needxdir = -1;
    std::string text;
    protocol.note("wants", scriptor.callSeg("wants", needxdir, text), needxdir, text);
    protocol.note("line type", scriptor.getSmrtlnType(text), text);

    double first = 0;
    double second = 0;
    quorlua::callLuaFunc(scriptor.getLua(false), "swap", "dd>dd", 1.0 * number, 2.0 * number, &first,
                         &second);
    protocol.note("swapped", first, second);

    const NumberedStyle style(number + 100);
    const std::vector<KVParams> values{{"x", "", KVValue::ofDouble(number)},
                                       {"text", "", KVValue::ofString(tagOf(number))}};
    protocol.note("told", scriptor.callSeg("told", values, style));
    protocol.note("parsed", scriptor.parsePrimary(primitives));
    protocol.notePrimitives(primitives);
    scriptor.getLua(true);
}

} // namespace

Listening::Listening(int number) : number_(number)
{
    current = this;
}

Listening::~Listening()
{
    current = nullptr;
}

void Listening::hear(const char* text, void*)
{
    const std::string bytes = text;
    if (current) current->shown_.push_back(utf8(bytes.substr(0, bytes.find("\nstack traceback"))));
}

const char* Listening::translate(const char* text)
{
    if (!current) return text;
    current->translated_ = "[" + tagOf(current->number_) + "] " + text;
    return current->translated_.c_str();
}

bool NumberedFunctor::getCurrentObjectId(KxDbObjectId& id) const
{
    id.setId(number_);
    return true;
}

bool NumberedFunctor::getIsoPoint(int number, KxGePoint3D& point) const
{
    point.set(number_, number, 0.5);
    return true;
}

bool NumberedFunctor::getDefaultIsoMat(KxGeMatrix3D&) const
{
    return false;
}

bool NumberedFunctor::getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const
{
    direction.set(a, b, number_);
    return true;
}

bool NumberedFunctor::getNormalIsoMat4(unsigned short, unsigned short, unsigned short, unsigned short,
                                       KxGeMatrix3D&) const
{
    return false;
}

bool NumberedFunctor::getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& matrix) const
{
    matrix.setRow(0, number_ + 0.25, 0, 0, 0);
    matrix.setRow(3, 0, 0, a + 10 * b, 1);
    return true;
}

bool NumberedFunctor::getArcIsoMat(unsigned short, unsigned short, unsigned short, KxGeMatrix3D&) const
{
    return false;
}

bool NumberedFunctor::getRefIsoMat(KxGeMatrix3D&, int, int) const
{
    return false;
}

void* NumberedFunctor::getCurrentObjectPointer() const
{
    return nullptr;
}

bool NumberedFunctor::getPsView(KxGeVector3D& direction) const
{
    direction.set(0, number_, -1);
    return true;
}

Lines drawing(int number, const ScriptFolder& folder, int rounds)
{
    const auto show = [](const char* text) { kxcom::errorMsg(text); };
    const NumberedFunctor functor(number);
    NumberedStyle style(number);
    Protocol protocol;
    kxcom::quorDebugTimeReset();
    const std::string component = folder.path("component.lua");
    const std::string layer = folder.path("layer.lua");
    for (int round = 0; round < rounds; ++round) {
        QuorGlibScriptorHelper helper;
        protocol.note("init", helper.init(component.c_str(), show));
        QuorGlibScriptor& scriptor = *helper.getScriptor();
        scriptor.setFunction(&functor);
        scriptor.setGlibTextstyle(&style);
        const std::vector<KVParams> parameters{{"number", "", KVValue::ofInt(number)},
                                               {"colour", "", KVValue::ofInt(100 + 10 * number)},
                                               {"name", "", KVValue::ofString(tagOf(number))},
                                               {"angle", "", KVValue::ofDouble(30 + number)},
                                               {"length", "", KVValue::ofDouble(2.5)}};
        protocol.note("set", scriptor.setKeyValues(parameters, 10), scriptor.setConstFactor(10),
                      scriptor.setObjectId(number));
        drawOnce(protocol, scriptor, number);
        protocol.note("style", style.name_);

        // A second file over the first, and the first once more: its name is kept.
        Primitives primitives;
        protocol.note("layer", scriptor.loadFile(layer.c_str(), false));
        protocol.note("none", scriptor.callSeg("none", primitives));
        protocol.notePrimitives(primitives);
        protocol.note("again", scriptor.loadFile(component.c_str(), false), scriptor.reloadLua(1));
        protocol.note("none", scriptor.callSeg("none", primitives));
        protocol.noteLastError();
    }
    for (short slot = 0; slot < 64; ++slot)
        if (const auto count = kxcom::quorDebugTimeCount(slot)) protocol.note("timed", slot, count);
    return protocol.lines;
}

Lines asking(int number, int rounds)
{
    using namespace quorconfig;
    constexpr QuorAuth::Module pipe = QuorAuth::Module::Pipe;
    const std::string tag = tagOf(number);
    Protocol protocol;
    protocol.note("initConfig", initConfig(nullptr, tag.c_str(), "7.0", ("db " + tag).c_str()));
    protocol.note("initSysConfig", initSysConfig());
    for (int round = 0; round < rounds; ++round) {
        const std::string name = tag + ", round " + std::to_string(round);
        protocol.noteAnswer("getProjectSpec", getProjectSpec(pipe, name.c_str()));
        protocol.noteAnswer("getProjectAttr", getProjectAttr("EQUIP", name.c_str()));
        protocol.noteAnswer("getProjectGlib", getProjectGlib(pipe, name.c_str()));
        protocol.noteAnswer("getProjectSupport", getProjectSupport(pipe, name.c_str()));
        protocol.noteAnswer("getProjectSpec_dbkey", getProjectSpec_dbkey(pipe, name.c_str()));
        protocol.noteAnswer("getProjectPath", getProjectPath(pipe, "keep", name.c_str()));
        protocol.noteAnswer("getProjectPath", getProjectPath(pipe, "look", name.c_str()));
        protocol.noteAnswer("getProjectUserDbPath", getProjectUserDbPath());
        protocol.noteAnswer("getProjDatabaseClass", getProjDatabaseClass(pipe, nullptr));
        protocol.noteAnswer("getDigitalFile", getDigitalFile(pipe, name.c_str()));
        protocol.note("isPropertyClass_full", isPropertyClass_full(pipe));
        short seed = -1;
        protocol.note("getProjectDbSeed", getProjectDbSeed(name.c_str(), pipe, seed), seed);
        protocol.noteAnswer("escape_dbkey", escape_dbkey(name.c_str()));
        protocol.note("set_escape_dbengine", set_escape_dbengine(static_cast<KxDb::DbType>(number % 2)));
    }
    return protocol.lines;
}
