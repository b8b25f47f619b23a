// One process of a cluster of MQTT servers: all processes on one Redis share sessions, retained messages and wills.
//
// usage: node server.js '{"port": PORT, "redis": PORT}'      listens on 127.0.0.1
import { createServer } from "node:net";
import { Aedes } from "aedes";
import persistence from "aedes-persistence-redis";
import emitter from "mqemitter-redis";

const settings = JSON.parse(process.argv[2]);
const redis = { host: "127.0.0.1", port: settings.redis };
// The heartbeat is how soon the others see that a process is gone, and publish the wills of its clients.
const broker = await Aedes.createBroker({ mq: emitter(redis), persistence: persistence(redis), heartbeatInterval: 2000 });
const server = createServer(broker.handle);
server.listen(settings.port, "127.0.0.1");
process.on("SIGTERM", () => broker.close(() => process.exit(0)));
