// The overview: is it well, and what runs.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { closePage, launch, openPage } from "./browser.mjs";
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
