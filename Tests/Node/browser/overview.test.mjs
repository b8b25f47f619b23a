// The overview: is it well, and what runs.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, closePage, launch, openPage, tabTo } from "./browser.mjs";
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

test("a service that is disabled elsewhere changes its light at once", async () => {
    const page = await openPage(browser, host);
    const row = page.getByRole("listitem").filter({ hasText: "Modbus TCP" });
    await row.getByText("Running").waitFor();
    await host.send("PUT", "/controls/ModbusTcp", { enabled: false });
    await row.getByText("Stopped").waitFor();
    await host.send("PUT", "/controls/ModbusTcp", { enabled: true });
    await row.getByText("Running").waitFor();
    await closePage(page);
});

test("a problem is shown with what to do", async () => {
    const page = await openPage(browser, host);
    await page.getByText("There is no open problem.").waitFor();
    await fetch(`${host.url}/controls/AsciiTcp`, { method: "PUT",
        body: JSON.stringify({ enabled: true, parameters: { port: host.ports.http } }) });
    const problem = page.getByRole("listitem").filter({ hasText: "cannot listen" });
    await problem.getByText(/Free the port/).waitFor();
    await page.getByText("1 problem").waitFor();
    assert.equal((await host.get("/problems")).problems.length, 1);
    await closePage(page);
});

test("the control authority is shown, set by keyboard alone, and taken back", async () => {
    const page = await openPage(browser, host);
    const card = page.getByRole("region", { name: "Control authority" });
    await card.getByText("Everybody has the authority").waitFor();
    await tabTo(page, "combobox", "REST May Run the Sensor");
    await page.keyboard.press("End");
    await tabTo(page, "button", "Save");
    await page.keyboard.press("Enter");
    await card.getByText("PLCs have the authority.").waitFor();
    assert.equal((await host.get("/sensor/authority")).rest, 2);
    assert.ok(await page.getByRole("button", { name: "Stop" }).isDisabled());
    await page.getByRole("button", { name: "Undo" }).click();
    await card.getByText("Everybody has the authority").waitFor();
    assert.equal((await host.get("/sensor/authority")).rest, 0);
    await closePage(page);
});

test("a PLC that has commanded the sensor is named as the holder", async () => {
    const own = await new Host().start("--start", "--still");
    await own.send("PUT", "/sensor/authority", { rest: 1, idleSeconds: 3600 });
    const page = await openPage(browser, own);
    const card = page.getByRole("region", { name: "Control authority" });
    await card.getByText("No PLC has sent a command").waitFor();
    await own.command(7, 6); // a trigger
    await card.getByText("ModbusTcp has the authority").waitFor();
    await card.getByText(/came over ModbusTcp/).waitFor();
    await page.getByText(/^ModbusTcp runs the sensor\./).waitFor();
    assert.ok(await page.getByRole("button", { name: "Stop" }).isDisabled());
    await own.send("PUT", "/sensor/authority", { rest: 0 });
    await card.getByText("Everybody has the authority").waitFor();
    await closePage(page);
    await own.end();
});

test("a time outside its range is refused beside its field", async () => {
    const page = await openPage(browser, host);
    const form = page.getByRole("form", { name: "Control authority" });
    await form.getByLabel("Time Without Commands of Protocols").fill("0");
    await form.getByRole("button", { name: "Save" }).click();
    await form.locator(".field", { hasText: "Time Without" }).getByRole("alert").waitFor();
    await checkAccess(page);
    assert.equal((await host.get("/sensor/authority")).idleSeconds, 10);
    await closePage(page);
});
