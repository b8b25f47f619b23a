// Live: the profile, the range image and the measurements as they come; the commands of the sensor on the overview.
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

const open = (options) => openPage(browser, host, { path: "/ui/#/live", ...options });
const frameOf = async (page) => Number((await page.getByText(/^Frame/).innerText()).replace(/\D/g, ""));
const state = async () => (await host.get("/sensor")).state;

test("profiles come, and stop while the page is frozen", async () => {
    const page = await open();
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    await page.getByRole("img", { name: /^Height map of the last/ }).waitFor();
    const first = await frameOf(page);
    await until(async () => (await frameOf(page)) > first, "the next profile");
    await page.getByRole("button", { name: "Freeze" }).click();
    await page.getByText("frozen", { exact: true }).waitFor();
    const frozen = await frameOf(page);
    const table = page.getByRole("group", { name: "Points" });
    await table.waitFor();
    await until(async () => (await host.get("/profile")).frame > frozen + 20, "profiles that the page does not show");
    assert.equal(await frameOf(page), frozen);
    const profile = await host.get("/profile?points=512");
    const heights = (await table.getByRole("row").locator("td:nth-child(3)").allInnerTexts()).map(Number);
    assert.equal(Math.max(...heights.filter((z) => !Number.isNaN(z))), Math.max(...profile.z.filter((z) => z !== null)));
    await page.getByRole("button", { name: "Freeze" }).click();
    await until(async () => (await frameOf(page)) > frozen, "the page to go on");
    await closePage(page);
});

test("the measurements are those that a PLC reads", async () => {
    const page = await open();
    for (const [name, address] of [["zMax", 170], ["zMin", 173], ["width", 176], ["meanZ", 179]]) {
        const number = await host.number(address);
        const shown = page.locator(`[data-measurement="profile/${name}"]`);
        await until(async () => Math.round(parseFloat((await shown.innerText()).replace(/[^\d.-]/g, "")) * 1000) === number, `${name}, ${number}`);
    }
    await closePage(page);
});

test("limits that somebody sets turn the decision", async () => {
    const page = await open();
    const one = page.getByRole("listitem").filter({ hasText: "Largest Height" });
    await one.getByText("pass").waitFor();
    await page.getByText("Limits", { exact: true }).click();
    const form = page.getByRole("form", { name: "Limits of Largest Height" });
    await form.getByLabel("Limits Decide").check();
    await form.getByLabel("Minimum").fill("1");
    await form.getByLabel("Maximum").fill("2");
    await form.getByRole("button", { name: "Save" }).click();
    await one.getByText("outside limits").waitFor();
    assert.equal((await host.registers(172, 1))[0], 0);
    await form.getByLabel("Minimum").fill("3");
    await form.getByRole("button", { name: "Save" }).click();
    await form.getByRole("alert").waitFor();
    await checkAccess(page);
    await host.send("PUT", "/sensor/limits", { zMax: { enabled: false } });
    await closePage(page);
});

test("the values in the registers are those that a PLC reads", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp" });
    const hex = async (address) => (await host.registers(address, 3)).map((word) => word.toString(16).toUpperCase().padStart(4, "0")).join(" ");
    for (const address of [170, 173, 176]) {
        const number = await host.number(address);
        const text = page.locator(`[data-value="${address}"]`);
        await until(async () => Math.round(parseFloat((await text.innerText()).replace(/[^\d.-]/g, "")) * 1000) === number, `the value at ${address}`);
        await page.getByRole("cell", { name: await hex(address), exact: true }).first().waitFor();
    }
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: 1 } });
    // Until the next frame, the registers have the marks of invalid values in the new order.
    await until(async () => (await page.getByRole("cell", { name: await hex(170), exact: true }).count()) > 0, "the new order");
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: 0 } });
    await closePage(page);
});

test("the sensor is stopped, started and triggered by keyboard alone", async () => {
    const page = await open({ path: "/ui/" });
    await page.getByText("Scanning").waitFor();
    await tabTo(page, "button", "Stop");
    await page.keyboard.press("Enter");
    await page.getByText("The scan stop is done.").waitFor();
    await page.getByText("Stands still").waitFor();
    assert.equal(await state(), "ready");
    await tabTo(page, "button", "Start");
    await page.keyboard.press("Enter");
    await page.getByText("The scan start is done.").waitFor();
    assert.equal(await state(), "running");
    await page.getByRole("button", { name: "Trigger" }).click();
    await page.getByText("The software trigger is done.").waitFor();
    await closePage(page);
});

test("an alignment shows that it runs, and ends", async () => {
    await host.send("POST", "/sensor/commands/stop", {});
    const page = await open({ path: "/ui/" });
    await page.getByRole("button", { name: "Align", exact: true }).click();
    await page.getByText(/^Under way: alignment/).waitFor();
    await page.getByText("The alignment is done.").waitFor();
    assert.equal((await host.get("/sensor")).alignment, "aligned");
    await page.getByRole("button", { name: "Clear alignment" }).click();
    await page.getByText("The removal of the alignment is done.").waitFor();
    await host.send("POST", "/sensor/commands/start", {});
    await closePage(page);
});

test("without authority the commands are greyed out, and the page says why", async () => {
    await host.send("PUT", "/sensor/authority", { rest: 2 });
    const page = await open({ path: "/ui/" });
    await page.getByText("Only PLCs may run the sensor.").waitFor();
    assert.ok(await page.getByRole("button", { name: "Stop" }).isDisabled());
    await host.send("PUT", "/sensor/authority", { rest: 0 });
    await until(() => page.getByRole("button", { name: "Stop" }).isEnabled(), "the authority");
    await closePage(page);
});

test("values grey out when the connection is cut, and come back", async () => {
    const own = await new Host().start("--start", "--still");
    const page = await openPage(browser, own, { path: "/ui/#/live", expectsLoss: true });
    await page.getByRole("img", { name: /^Profile of frame/ }).waitFor();
    await own.stop("SIGKILL");
    await page.getByText(/No connection for/).waitFor();
    for (const title of ["Profile", "Range image", "Measurements"]) {
        await page.getByRole("region", { name: title }).and(page.locator(".old")).waitFor();
    }
    await checkAccess(page);
    await own.start("--start", "--still");
    await page.locator("section.old").first().waitFor({ state: "detached" });
    const first = await frameOf(page);
    await until(async () => (await frameOf(page)) > first, "new profiles");
    await closePage(page);
    await own.end();
});

for (const path of ["overview", "live"]) {
    for (const [width, dark] of [[360, true], [1920, false]]) {
        test(`${path} fits ${width} pixels while the sensor runs`, async () => {
            const page = await open({ path: `/ui/#/${path}`, width, dark });
            await page.getByText(path === "live" ? /^Frame \d/ : "Scanning").waitFor();
            await checkWidth(page);
            await checkAccess(page);
            await closePage(page);
        });
    }
}
