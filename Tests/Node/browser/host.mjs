// Starts the real host for a test, and reads its registers.
import { spawn } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { connect } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

export const PATIENCE_MS = 1000 * Number(process.env.ZU_PATIENCE ?? 30);

const running = new Set();

// A test that failed has left its host.
process.on("exit", () => running.forEach((child) => child.kill("SIGKILL")));

/// A running host with REST and Modbus TCP. Each port is free unless `arguments_` name one.
export class Host {
    constructor(data = mkdtempSync(join(tmpdir(), "console-"))) {
        this.data = data;
        this.ports = {};
    }

    async start(...arguments_) {
        const words = ["--http", `127.0.0.1:${this.ports.http ?? 0}`, "--data", this.data, "--enable", "ModbusTcp", "--param",
            "ModbusTcp.port=0", ...arguments_];
        this.process = spawn(join(process.env.ZU_BIN, "zucontrol-host"), words, { stdio: ["ignore", "pipe", "ignore"] });
        const child = this.process;
        running.add(child);
        child.once("exit", () => running.delete(child));
        const ended = new Promise((_, reject) => child.once("exit", (code) => reject(new Error(`the host ended with ${code}`))));
        const ready = new Promise((resolve) => {
            createInterface({ input: child.stdout }).on("line", (line) => {
                const [word, name, address] = line.split(" ");
                if (word === "listening") {
                    this.ports[name] = Number(address.split(":").at(-1));
                } else if (word === "ready") {
                    resolve();
                }
            });
        });
        ended.catch(() => {});
        await Promise.race([ready, ended]);
        child.unref(); // the test does not wait for a host that it has left
        child.stdout.unref();
        return this;
    }

    /// The address of the page. Cookies of a session need the name localhost.
    get url() {
        return `http://localhost:${this.ports.http}`;
    }

    /// Ends the process. The data stays, and so does the port for the next start.
    async stop(signal = "SIGTERM") {
        if (this.process.exitCode === null && this.process.signalCode === null) {
            const ended = new Promise((resolve) => this.process.once("exit", resolve));
            this.process.kill(signal);
            await ended;
        }
    }

    async end() {
        await this.stop();
        rmSync(this.data, { recursive: true, force: true });
    }

    async get(path) {
        const answer = await fetch(this.url + path);
        return answer.json();
    }

    async send(method, path, body) {
        const answer = await fetch(this.url + path, { method, body: body instanceof Uint8Array ? body : JSON.stringify(body) });
        if (!answer.ok) {
            throw new Error(`${method} ${path}: ${answer.status} ${await answer.text()}`);
        }
        return answer;
    }

    /// Sends a Modbus request, and returns its answer behind the header.
    modbus(...bytes) {
        return new Promise((resolve, reject) => {
            const socket = connect(this.ports.ModbusTcp, "127.0.0.1");
            let received = Buffer.alloc(0);
            socket.on("connect", () => socket.write(Buffer.from([0, 1, 0, 0, 0, bytes.length + 1, 1, ...bytes])));
            socket.on("error", reject);
            socket.on("data", (part) => {
                received = Buffer.concat([received, part]);
                if (received.length >= 6 && received.length >= 6 + received.readUInt16BE(4)) {
                    socket.destroy();
                    resolve(received.subarray(7));
                }
            });
        });
    }

    /// Reads holding registers with function 3.
    async registers(address, count) {
        const answer = await this.modbus(3, address >> 8, address & 255, count >> 8, count & 255);
        return Array.from({ length: count }, (_, i) => answer.readUInt16BE(2 + 2 * i));
    }

    /// Writes a command without a text into the first registers with function 16.
    command(requestId, id) {
        return this.modbus(16, 0, 0, 0, 2, 4, requestId >> 8, requestId & 255, id >> 8, id & 255);
    }

    /// The number of 32 bits at an address, most significant register first.
    async number(address) {
        const [high, low] = await this.registers(address, 2);
        return ((high << 16) | low) | 0;
    }
}

/// Registers as the page shows them.
export function hex(words) {
    return words.map((word) => word.toString(16).toUpperCase().padStart(4, "0")).join(" ");
}
