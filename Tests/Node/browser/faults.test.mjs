// Answers that are refused, odd, late or missing: the page says so, and never shows old values as if they were present.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, closePage, launch, openPage, until } from "./browser.mjs";
import { Host } from "./host.mjs";

let browser;
let host;

before(async () => {
    browser = await launch();
    host = await new Host().start("--start", "--still");
});

after(async () => {
    await browser.close();
    await host.end();
});

/// A page without a view, so that a test can set its routes before the view reads anything.
const open = () => openPage(browser, host, { path: "/ui/#/none" });
const show = (page, view) => page.goto(`${host.url}/ui/#/${view}`);
const problem = (status, detail) => ({ status, contentType: "application/problem+json", body: JSON.stringify({ status, detail, title: "Refused" }) });

test("values that the host does not give any more turn grey", async () => {
    const page = await open();
    await show(page, "services/ModbusTcp");
    await page.getByLabel("Idle Timeout").waitFor();
    await page.route("**/controls/ModbusTcp?schema=true", (route) => route.fulfill(problem(503, "The host is busy.")));
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 61 } });
    await page.getByRole("region", { name: "Parameters" }).and(page.locator(".old")).waitFor();
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 60 } });
    await closePage(page);
});

test("a document that cannot be read is told, and the health does not count as good without it", async () => {
    const page = await open();
    await page.route("**/problems", (route) => route.fulfill({ status: 200, contentType: "application/json", body: "{" }));
    await show(page, "overview");
    await page.getByText("The host sent a document that cannot be read.").first().waitFor();
    await page.getByText("Scanning").waitFor();
    assert.equal(await page.getByText("All is well").count(), 0);
    await closePage(page);
});

test("a view that fails says so, and the other views work", async () => {
    const page = await open();
    await page.route("**/sensor", (route) => route.fulfill({ status: 200, contentType: "application/json", body: "{}" }));
    await show(page, "overview");
    await page.getByRole("alert").getByText("This view cannot show what the host has sent").waitFor();
    await checkAccess(page);
    await page.getByRole("link", { name: "Jobs" }).click();
    await page.getByRole("rowheader", { name: "default" }).waitFor();
    await closePage(page);
});

test("a change that no event has told is shown once the events come again", async () => {
    const page = await open();
    await page.route("**/events", (route) => route.abort());
    await show(page, "services/ModbusTcp");
    await page.getByLabel("Idle Timeout").waitFor();
    await page.reload(); // the stream that was open before the route is gone
    await page.getByLabel("Idle Timeout").waitFor();
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 62 } });
    await page.unroute("**/events");
    await until(async () => (await page.getByLabel("Idle Timeout").inputValue()) === "62", "the value");
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 60 } });
    await page.context().close(); // the aborted stream is an error of the page
});

test("a second save directly after the first one is not refused", async () => {
    const page = await open();
    await page.route("**/controls/ModbusTcp?schema=true", async (route) => {
        await new Promise((resolve) => setTimeout(resolve, 1_500)); // a slow network
        await route.continue();
    });
    await show(page, "services/ModbusTcp");
    for (const seconds of ["63", "60"]) {
        await page.getByLabel("Idle Timeout").fill(seconds);
        await page.getByRole("button", { name: "Save" }).click();
        await page.getByText("The parameters are saved.").waitFor();
        await page.getByRole("button", { name: "Close this message" }).click();
        assert.equal(await page.getByRole("alert").count(), 0);
    }
    assert.equal((await host.get("/controls/ModbusTcp")).parameters.idleTimeout, 60);
    await closePage(page);
});

test("a view that is left ends its requests", async () => {
    const page = await open();
    await page.route("**/operations", () => {}); // never answered
    const ended = page.waitForEvent("requestfailed", (request) => request.url().endsWith("/operations"));
    await show(page, "events");
    await page.getByRole("group", { name: "Events" }).waitFor();
    await page.getByRole("link", { name: "Jobs" }).click();
    await ended;
    await page.getByText("Connected").waitFor();
    await closePage(page);
});

test("a refused stream is told with its reason", async () => {
    const page = await open();
    await page.route("**/profile?*", (route) => route.fulfill(problem(503, "There are 64 streams already.")));
    await show(page, "live");
    await page.getByRole("alert").getByText("There are 64 streams already.").waitFor();
    await page.unroute("**/profile?*");
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    await page.getByRole("alert").waitFor({ state: "detached" });
    await closePage(page);
});

test("a value that is none of its choices is shown as it is, and a secret has no undo", async () => {
    const page = await open();
    await page.route("**/controls/ModbusTcp?schema=true", async (route) => {
        const answer = await route.fetch();
        const json = await answer.json();
        const { properties } = json._schema.properties.parameters;
        json.parameters.registerOrder = 7;
        properties.idleTimeout.writeOnly = true;
        await route.fulfill({ response: answer, json });
    });
    await show(page, "services/ModbusTcp");
    const order = page.locator("select", { has: page.locator("option", { hasText: /^7$/ }) });
    await order.waitFor();
    assert.equal(await order.inputValue(), "7");
    await page.getByLabel("Idle Timeout").fill("65");
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByText("The parameters are saved.").waitFor();
    assert.equal(await page.getByRole("button", { name: "Undo" }).count(), 0);
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { idleTimeout: 60 } });
    await closePage(page);
});
