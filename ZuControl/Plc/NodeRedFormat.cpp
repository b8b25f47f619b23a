#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/Plc/PlcWords.h"
#include "ZuControl/Plc/PlcWriters.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>

namespace ZuControl::Plc
{

namespace
{

using Json = nlohmann::json;

// Keeps the tags and plans the requests: [function code, first, count] each. A tag lies in one request, unless it is
// longer than a request can be.
constexpr char const* SET_UP = R"js(
const MOST = 125, CODES = {registers: 3, coils: 1, discreteInputs: 2};
const requests = [];
for (const tag of tags) {
    let first = tag.first;
    for (let left = tag.count; left > 0;) {
        const part = Math.min(left, MOST), last = requests[requests.length - 1], code = CODES[tag.area];
        if (last && last[0] === code && last[1] <= first && first + part - last[1] <= MOST) {
            last[2] = Math.max(last[2], first + part - last[1]);
        } else {
            requests.push([code, first, part]);
        }
        first += part;
        left -= part;
    }
}
flow.set("tags", tags);
flow.set("requests", requests);
)js";

constexpr char const* ASK = R"js(
return [flow.get("requests").map((request, index) => ({
    index,
    payload: {fc: request[0], unitid: 1, address: request[1], quantity: request[2]},
}))];
)js";

constexpr char const* DECODE = R"js(
const requests = flow.get("requests");
if (msg.index === 0) {
    context.set("seen", {});
}
const seen = context.get("seen") || {};
const [code, first, count] = requests[msg.index];
for (let i = 0; i < count; i++) {
    seen[code + ":" + (first + i)] = Number(msg.payload[i]);
}
context.set("seen", seen);
if (msg.index !== requests.length - 1) {
    return null;
}

const CODES = {registers: 3, coils: 1, discreteInputs: 2};

// The value in these registers; null for an invalid one. Numbers of 64 bits beyond 2^53 come as texts.
function decode(tag, registers) {
    if (tag.type === "BOOL") {
        return Boolean(registers[0]);
    }
    if (tag.type === "RAW") {
        return registers;
    }
    if (tag.order === "BADC" || tag.order === "DCBA") {
        registers = registers.map(register => register >> 8 | (register & 0xff) << 8);
    }
    if (tag.type === "TEXT") {
        const bytes = registers.flatMap(register => tag.characters === 1 ? [register & 0xff] : [register >> 8, register & 0xff]);
        const end = bytes.indexOf(0);
        return Buffer.from(end < 0 ? bytes : bytes.slice(0, end)).toString("utf8");
    }
    if (tag.type === "BIT") {
        return String(registers[0]) === tag.invalid ? null : Boolean(registers[0] >> tag.bit & 1);
    }
    if (tag.order === "CDAB" || tag.order === "DCBA") {
        registers = registers.slice().reverse();
    }
    const data = Buffer.alloc(2 * registers.length);
    registers.forEach((register, index) => data.writeUInt16BE(register, 2 * index));
    const read = {
        USINT: () => data.readUInt16BE(0) & 0xff, INT: () => data.readInt16BE(0), UINT: () => data.readUInt16BE(0),
        DINT: () => data.readInt32BE(0), UDINT: () => data.readUInt32BE(0), LINT: () => data.readBigInt64BE(0),
        ULINT: () => data.readBigUInt64BE(0), REAL: () => data.readFloatBE(0), LREAL: () => data.readDoubleBE(0),
    };
    const number = read[tag.type]();
    if (String(number) === tag.invalid || Number.isNaN(number)) {
        return null;
    }
    if (typeof number === "bigint" && !Number.isSafeInteger(Number(number))) {
        return String(number);
    }
    return Number(number) / tag.divisor;
}

const values = {};
for (const tag of flow.get("tags")) {
    const registers = [];
    for (let i = 0; i < tag.count; i++) {
        registers.push(seen[CODES[tag.area] + ":" + (tag.first + i)]);
    }
    values[tag.name] = decode(tag, registers);
    if (tag.role === "fingerprint" && values[tag.name] !== FINGERPRINT) {
        node.error("The map has the fingerprint " + values[tag.name] + ", and this flow " + FINGERPRINT + ".", msg);
        return null;
    }
}
return {payload: values};
)js";

constexpr char const* START = R"js(
const place = role => flow.get("tags").find(tag => tag.role === role);
const request = place("commandRequestId"), command = place("commandId"), text = place("commandText");
if (!request || !command) {
    node.error("The map has no registers for commands.", msg);
    return null;
}
const id = ((flow.get("requestId") || Date.now()) + 1) % 65536;
flow.set("requestId", id);
const first = Math.min(request.first, command.first);
const registers = new Array(Math.max(request.first, command.first) + 1 - first).fill(0);
registers[request.first - first] = id;
registers[command.first - first] = 1;
if (text && text.first === first + registers.length) {
    registers.push(0);
}
const isSwapped = request.order === "BADC" || request.order === "DCBA";
const value = registers.map(register => isSwapped ? register >> 8 | (register & 0xff) << 8 : register);
return {payload: {value, fc: 16, unitid: 1, address: first, quantity: registers.length}};
)js";

// Writes the coil that the topic names.
constexpr char const* WRITE_COIL = R"js(
const coil = flow.get("tags").find(tag => tag.area === "coils" && tag.name === msg.topic);
if (!coil) {
    node.error("The map has no coil " + msg.topic + ".", msg);
    return null;
}
return {payload: {value: msg.payload !== false, fc: 5, unitid: 1, address: coil.first, quantity: 1}};
)js";

Json TagOfFlow(PlcTag const& tag)
{
    ControlProtocol::RegisterField const& field = tag.field;
    return {{"name", tag.name},           {"area", NameOf(field.area)},
            {"first", tag.address},       {"count", field.count},
            {"type", NameOf(field.type)}, {"order", NameOf(tag.order)},
            {"bit", field.bit},           {"characters", field.charactersPerRegister},
            {"divisor", field.divisor},   {"invalid", InvalidText(field)},
            {"unit", field.unit},         {"source", tag.source},
            {"role", NameOf(field.role)}};
}

/// A JSON text of ASCII characters, which is an expression of JavaScript too.
std::string Ascii(Json const& value)
{
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

/// Makes nodes with ids that are the same for the same service.
class Flow final
{
public:
    explicit Flow(std::string flowName) : name(std::move(flowName))
    {
    }

    std::string IdOf(char const* node) const
    {
        std::array<char, 17> digits{};
        std::snprintf(digits.data(), digits.size(), "%08x%08x", unsigned{ControlProtocol::Fingerprint::Crc32(name)},
                      unsigned{ControlProtocol::Fingerprint::Crc32(name + '/' + node)});
        return digits.data();
    }

    /// A node in the tab, at a place in its drawing, wired to the node `next` if there is one.
    Json& Add(char const* type, char const* node, int x, int y, char const* next = nullptr)
    {
        Json wires = Json::array();
        if (next != nullptr)
        {
            wires.push_back(Json::array({IdOf(next)}));
        }
        nodes.push_back({{"id", IdOf(node)},
                         {"type", type},
                         {"z", IdOf("tab")},
                         {"name", node},
                         {"x", x},
                         {"y", y},
                         {"wires", std::move(wires)}});
        return nodes.back();
    }

    void AddFunction(char const* node, int x, int y, char const* next, std::string const& code,
                     std::string const& setUp = "")
    {
        Add("function", node, x, y, next)
            .update({{"func", code}, {"outputs", 1}, {"initialize", setUp}, {"finalize", ""}, {"libs", Json::array()}});
    }

    std::string const name;
    Json nodes = Json::array();
};

void AddModbus(Flow& flow, char const* type, char const* node, int x, int y, char const* next)
{
    Json& added = flow.Add(type, node, x, y, next);
    added["wires"].push_back(Json::array()); // the second output: the raw answer
    added.update({{"server", flow.IdOf("connection")},
                  {"showStatusActivities", false},
                  {"showErrors", true},
                  {"showWarnings", true},
                  {"emptyMsgOnFail", false},
                  {"keepMsgProperties", true},
                  {"useIOFile", false},
                  {"ioFile", ""},
                  {"useIOForPayload", false},
                  {"delayOnStart", false}});
}

void AddConnection(Flow& flow, uint16 port)
{
    flow.nodes.push_back({{"id", flow.IdOf("connection")},
                          {"type", "modbus-client"},
                          {"name", flow.name},
                          {"clienttype", "tcp"},
                          {"bufferCommands", true},
                          {"stateLogEnabled", false},
                          {"queueLogEnabled", false},
                          {"failureLogEnabled", true},
                          {"tcpHost", "127.0.0.1"},
                          {"tcpPort", std::to_string(port)},
                          {"tcpType", "DEFAULT"},
                          {"serialConnectionDelay", "100"},
                          {"unit_id", "1"},
                          {"commandDelay", "1"},
                          {"clientTimeout", "1000"},
                          {"reconnectOnTimeout", true},
                          {"reconnectTimeout", "2000"},
                          {"parallelUnitIdsAllowed", true}});
}

Json InjectMembers(char const* repeat)
{
    return {{"props", Json::array({{{"p", "payload"}}})},
            {"repeat", repeat},
            {"crontab", ""},
            {"once", false},
            {"onceDelay", 0.1},
            {"topic", ""},
            {"payload", ""},
            {"payloadType", "date"}};
}

/// Adds a button for the first coil that can be written. Others need only their name as its topic.
void AddCoil(Flow& flow, std::vector<PlcTag> const& tags)
{
    auto const coil = std::ranges::find_if(tags, [](PlcTag const& tag) {
        return tag.field.area == ControlProtocol::FieldArea::COILS && tag.field.isWritable;
    });
    if (coil == tags.end())
    {
        return;
    }
    Json& inject = flow.Add("inject", "write the coil", 110, 240, "coil");
    inject.update(InjectMembers(""));
    inject.update({{"props", Json::array({{{"p", "payload"}}, {{"p", "topic"}, {"vt", "str"}}})},
                   {"topic", coil->name},
                   {"payload", "true"},
                   {"payloadType", "bool"}});
    flow.AddFunction("coil", 270, 240, "write", WRITE_COIL);
}

} // namespace

std::string WriteNodeRed(PlcTagList const& list)
{
    Json tags = Json::array();
    for (PlcTag const& tag : list.tags)
    {
        tags.push_back(TagOfFlow(tag));
    }
    std::string const fingerprint = std::to_string(list.fingerprint);
    Flow flow(list.service);
    flow.nodes.push_back({{"id", flow.IdOf("tab")},
                          {"type", "tab"},
                          {"label", list.displayName},
                          {"disabled", false},
                          {"info", "Reads all values each second, and starts the scan. Needs the nodes of "
                                   "node-red-contrib-modbus.\n\nFingerprint of the map: " +
                                       fingerprint}});
    AddConnection(flow, list.port != 0 ? list.port : uint16{502});
    flow.Add("inject", "poll", 110, 80, "requests").update(InjectMembers("1"));
    flow.AddFunction("requests", 270, 80, "read", ASK, "const tags = " + Ascii(tags) + ";" + SET_UP);
    AddModbus(flow, "modbus-flex-getter", "read", 430, 80, "values");
    flow.AddFunction("values", 590, 80, "show", "const FINGERPRINT = " + fingerprint + ";" + DECODE);
    flow.Add("debug", "show", 750, 80).update({{"active", true}, {"tosidebar", true}, {"complete", "payload"}});
    flow.Add("inject", "start the scan", 110, 160, "command").update(InjectMembers(""));
    flow.AddFunction("command", 270, 160, "write", START);
    AddCoil(flow, list.tags);
    AddModbus(flow, "modbus-flex-write", "write", 430, 160, "written");
    flow.Add("debug", "written", 590, 160).update({{"active", true}, {"tosidebar", true}, {"complete", "payload"}});
    return Ascii(flow.nodes) + '\n';
}

} // namespace ZuControl::Plc
