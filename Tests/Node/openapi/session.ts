// The session of docs/rest.md, by a client that is made from the description of the service.
//
// `node session.js PORT`: the host runs with --start --still and both protocols. The types are those of the description, so that the
// compiler finds a path, a member or a parameter that the description does not have.

import assert from "node:assert/strict";
import createClient from "openapi-fetch";
import type { components, paths } from "./description.js";

const client = createClient<paths>({ baseUrl: `http://127.0.0.1:${process.argv[2]}` });

const modbus = { path: { protocol: "ModbusTcp" } };
const ascii = { path: { protocol: "AsciiTcp" } };
const assembly = { path: { protocol: "ModbusTcp", registerAssembly: "registerAssembly-0" } };

type Modbus = components["schemas"]["Control.ModbusTcp"];

/** The document of an answer, which has to be there. */
function given<T>(answer: { data?: T; error?: unknown; response: Response }): T {
    if (answer.data === undefined) {
        throw new Error(`${answer.response.status} ${JSON.stringify(answer.error)}`);
    }
    return answer.data;
}

/** Status and sentence of a refusal. */
function refused(answer: { error?: { status: number; detail: string } }): [number, string] {
    assert.ok(answer.error !== undefined);
    return [answer.error.status, answer.error.detail];
}

async function readModbus(): Promise<Modbus> {
    const control = given(await client.GET("/controls/{protocol}", { params: modbus }));
    assert.ok("id" in control && control.id === "ModbusTcp");
    return control;
}

async function protocols() {
    const list = given(await client.GET("/controls"));
    const ids = (list._embedded?.item ?? []).map((item) => ("id" in item ? item.id : undefined));
    assert.ok(ids.includes("AsciiTcp") && ids.includes("ModbusTcp"), ids.join());

    const control = await readModbus();
    assert.equal(control.displayName, "Modbus TCP");
    assert.equal(control.enabled, true);
    assert.equal(control.status, 0);
    assert.equal(control.parameters.maxClients, 16);

    for (const [enabled, status] of [[false, 1], [true, 0]] as const) {
        const changed = given(await client.PUT("/controls/{protocol}", { params: modbus, body: { enabled } }));
        assert.ok("status" in changed);
        assert.deepEqual([changed.enabled, changed.status], [enabled, status]);
    }
    given(await client.PUT("/controls/{protocol}", { params: modbus, body: { parameters: { maxClients: 4 } } }));
    assert.equal((await readModbus()).parameters.maxClients, 4);

    const bad = await client.PUT("/controls/{protocol}", { params: modbus, body: { parameters: { idleTimeout: 5, maxClients: 0 } } });
    assert.deepEqual(refused(bad), [422, "Maximum Number of Clients was set to be less than its minimum."]);
    assert.equal((await readModbus()).parameters.idleTimeout, 60);
}

async function blocks(): Promise<number[]> {
    const shown = given(await client.GET("/controls/{protocol}/registerAssemblies/{registerAssembly}", { params: assembly }));
    return shown.blocks.map((block) => block.outputId);
}

async function command(name: string, body: Record<string, unknown>) {
    return client.POST("/controls/{protocol}/registerAssemblies/{registerAssembly}/commands/{command}", {
        params: { path: { ...assembly.path, command: name } },
        body: body as components["schemas"]["AssemblyArguments"],
    });
}

async function registers() {
    const commands = given(await client.GET("/controls/{protocol}/registerAssemblies/{registerAssembly}/commands", { params: assembly }));
    assert.equal(commands._embedded?.item?.length, 4);
    given(await command("add", { blocks: [{ type: "MeasurementValue", outputId: 300, dataSource: "profile/zMax" }] }));
    given(await command("update", { outputId: 300, newParams: { outputId: 310, dataSource: "profile/zMax" } }));
    assert.ok((await blocks()).includes(310));

    const preview = given(await client.POST("/controls/{protocol}/registerAssemblies/{registerAssembly}/preview", {
        params: assembly, body: { command: "compact", arguments: { startingOutputId: 0 } },
    }));
    assert.deepEqual(preview.moved.map((entry) => [entry?.from, entry?.to]), [[310, 185]]);
    given(await command("compact", { startingOutputId: 0 }));
    assert.ok((await blocks()).includes(185));
    given(await command("remove", { outputIdList: [{ outputId: 185 }] }));
    const again = await command("remove", { outputIdList: [{ outputId: 185 }] });
    assert.deepEqual(refused(again), [409, "No register blocks were removed."]);
}

async function names(): Promise<unknown[]> {
    return given(await client.GET("/controls/{protocol}/outputs", { params: ascii })).map.map((entry) => entry.outputId);
}

async function output(name: string, body: Record<string, unknown>) {
    return client.POST("/controls/{protocol}/outputs/commands/{command}", {
        params: { path: { ...ascii.path, command: name } },
        body: body as components["schemas"]["MapArguments"],
    });
}

async function outputs() {
    assert.deepEqual(await names(), ["meanZ", "points", "width", "zMax", "zMin"]);
    await output("updateId", { map: [{ outputId: "zMax" }, { outputId: "height" }] });
    assert.ok((await names()).includes("height"));
    const twice = await output("add", { outputId: "top", source: "profile/zMax" });
    assert.deepEqual(refused(twice), [409, "Output connection map action error"]);
    await output("remove", { outputId: "height" });
    assert.ok(!(await names()).includes("height"));
    await output("add", { outputId: "zMax", source: "profile/zMax" });
    assert.deepEqual(await names(), ["meanZ", "points", "width", "zMax", "zMin"]);

    const sent = given(await client.POST("/controls/{protocol}/commands/{command}", {
        params: { path: { protocol: "AsciiTcp", command: "sendText" } }, body: { text: "shift ends" },
    }));
    assert.deepEqual(sent, { clients: 0 });
}

async function conflictsAndHealth() {
    const stale = await client.PUT("/controls/{protocol}", { params: { ...modbus, header: { "If-Match": '"0"' } }, body: { enabled: false } });
    assert.deepEqual(refused(stale), [412, "The document at /controls/ModbusTcp has changed."]);

    const health = given(await client.GET("/health"));
    assert.deepEqual([health.status, health.faults], ["ok", []]);
    assert.ok(Array.isArray(given(await client.GET("/problems")).problems));
    const scanner = given(await client.GET("/scanners/{id}", { params: { path: { id: "scanner-0" } } }));
    assert.deepEqual([scanner.engine, scanner.alignment], ["engine-0", "notAligned"]);
}

async function events() {
    const ending = new AbortController();
    const stream = await client.GET("/events", { headers: { Accept: "text/event-stream" }, parseAs: "stream", signal: ending.signal });
    const reader = given(stream)!.getReader();
    await client.PUT("/controls/{protocol}", { params: modbus, body: { enabled: true } });
    let text = "";
    while (!text.includes('{"path":"/controls/ModbusTcp","type":2}')) {
        const { value, done } = await reader.read();
        assert.ok(!done, text);
        text += new TextDecoder().decode(value);
    }
    ending.abort();
}

async function trail() {
    const page = given(await client.GET("/audit", { params: { query: { what: "PUT", limit: 1 } } }));
    assert.ok(typeof page === "object");
    assert.deepEqual([page.entries[0]?.who, page.entries[0]?.what], ["local", "PUT /controls/ModbusTcp"]);
}

await protocols();
await registers();
await outputs();
await conflictsAndHealth();
await events();
await trail();
console.log("the session is done");
