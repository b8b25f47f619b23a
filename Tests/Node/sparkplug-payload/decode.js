// Decodes Sparkplug payloads: a line of hexadecimal digits of standard input each, as a line of JSON.
//
// `payload` is what the package gives to its users. It does not know the types of metrics in data messages, which do not
// have them; `fields` is what it reads from the bytes.
const readline = require("node:readline");
const Long = require("long");
const sparkplug = require("sparkplug-payload").get("spBv1.0");
const { org } = require("sparkplug-payload/lib/sparkplugPayloadProto");

const { Payload } = org.eclipse.tahu.protobuf;

readline.createInterface({ input: process.stdin }).on("line", (line) => {
    const bytes = Buffer.from(line, "hex");
    const decoded = {
        payload: sparkplug.decodePayload(bytes),
        fields: Payload.toObject(Payload.decode(bytes), { longs: Number }),
    };
    console.log(JSON.stringify(decoded, (_, value) => (Long.isLong(value) ? value.toNumber() : value)));
});
