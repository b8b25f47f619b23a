// Services: enable, disable, parameters as forms, refusals beside the field, metrics.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
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

const open = (options) => openPage(browser, host, { path: "/ui/#/services/ModbusTcp", ...options });

test("a service is disabled and enabled", async () => {
    const page = await open();
    await page.getByRole("button", { name: "Disable" }).click();
    await page.getByRole("button", { name: "Enable", exact: true }).waitFor();
    assert.equal((await host.get("/controls/ModbusTcp")).enabled, false);
    await page.getByRole("button", { name: "Enable", exact: true }).click();
    await page.getByRole("button", { name: "Disable" }).waitFor();
    assert.equal((await host.get("/controls/ModbusTcp")).enabled, true);
    await closePage(page);
});

test("a parameter is changed by keyboard alone, and taken back", async () => {
    const page = await open();
    const before = (await host.get("/controls/ModbusTcp")).parameters.idleTimeout;
    await page.getByLabel("Idle Timeout").waitFor();
    await tabTo(page, "textbox", "Idle Timeout");
    await page.keyboard.press("Control+A");
    await page.keyboard.type("77");
    await page.keyboard.press("Enter");
    await page.getByText("The parameters are saved.").waitFor();
    assert.equal((await host.get("/controls/ModbusTcp")).parameters.idleTimeout, 77);
    await page.getByRole("button", { name: "Undo" }).click();
    await page.getByText("Taken back.").waitFor();
    assert.equal((await host.get("/controls/ModbusTcp")).parameters.idleTimeout, before);
    await closePage(page);
});

test("a refusal stands beside its field, and nothing is changed", async () => {
    const page = await open();
    const field = page.getByLabel("Maximum Number of Clients");
    await field.fill("0");
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByRole("alert").getByText(/less than its minimum/).waitFor();
    assert.equal(await field.getAttribute("aria-invalid"), "true");
    assert.match(await field.evaluate((input) => document.getElementById(input.getAttribute("aria-describedby").split(" ").at(-1)).textContent),
        /less than its minimum/);
    await checkAccess(page);
    assert.equal((await host.get("/controls/ModbusTcp")).parameters.maxClients, 16);
    await closePage(page);
});

test("a change by somebody else is not overwritten", async () => {
    const page = await open();
    await page.getByLabel("Idle Timeout").fill("90");
    await page.route("**/controls/ModbusTcp?schema=true", (route) => route.abort()); // the page does not learn of the change
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { maxClients: 17 } });
    await page.getByRole("button", { name: "Save" }).click();
    await page.getByText(/Somebody else has changed this/).waitFor();
    assert.equal((await host.get("/controls/ModbusTcp")).parameters.idleTimeout, 60);
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { maxClients: 16 } });
    await page.context().close(); // the refused reads are errors of the page
});

test("the metrics are those of the service", async () => {
    const page = await open();
    const shown = page.locator("[data-metric=resultSets]");
    await shown.waitFor();
    const present = (await host.get("/controls/ModbusTcp/metrics")).resultSets;
    await until(async () => Number((await shown.innerText()).replace(/\D/g, "")) >= present, "the number of result sets");
    await closePage(page);
});

test("a schema that is odd shows what it can and names the rest", async () => {
    const page = await open({ path: "/ui/#/overview" });
    await page.route("**/controls/ModbusTcp?schema=true", async (route) => {
        const answer = await route.fetch();
        const json = await answer.json();
        const { properties } = json._schema.properties.parameters;
        properties.table = { type: "array", title: "Odd Table" };
        properties.nothing = {};
        properties.port.title = "<img src=x onerror=alert(1)>";
        await route.fulfill({ response: answer, json });
    });
    await page.goto(`${host.url}/ui/#/services/ModbusTcp`);
    await page.getByText("Not shown here: ").getByText("Odd Table, nothing").waitFor();
    await page.getByLabel("<img src=x onerror=alert(1)>").waitFor();
    assert.equal(await page.locator("main img").count(), 0);
    await closePage(page);
});

for (const [width, dark] of [[360, true], [1920, false]]) {
    test(`the services fit ${width} pixels`, async () => {
        const page = await open({ width, dark });
        await page.getByLabel("Idle Timeout").waitFor();
        await page.locator("[data-metric=resultSets]").waitFor();
        await checkWidth(page);
        await checkAccess(page);
        await closePage(page);
    });
}
