// Registers: the map, its values, and changes with the consequence shown first.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { cells, checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
import { hex, Host } from "./host.mjs";

const ASSEMBLY = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0";
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

const open = (options) => openPage(browser, host, { path: "/ui/#/registers/ModbusTcp", ...options });
const addresses = async () => (await host.get(ASSEMBLY)).blocks.map((block) => block.outputId);

/// Chooses a data source in a list, or types it where the host has no list.
async function chooseSource(form, source) {
    const input = form.getByLabel("Data source");
    const isList = await input.evaluate((element) => element.tagName === "SELECT");
    await (isList ? input.selectOption(source) : input.fill(source));
}

test("a block is added, moved and removed, each after its consequence", async () => {
    const page = await open();
    const add = page.getByRole("form", { name: "Add a block" });
    await add.getByLabel("Content").selectOption("MeasurementValue");
    await add.getByLabel("First register").fill("300");
    await chooseSource(add, "profile/zMax");
    await add.getByRole("button", { name: "Add …" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.getByText("adds profile/zMax at 300").waitFor();
    await dialog.getByText(/fingerprint becomes/).waitFor();
    assert.ok(!(await addresses()).includes(300), "nothing changes before the answer");
    await checkAccess(page);
    await dialog.getByRole("button", { name: "Do it" }).click();
    await dialog.waitFor({ state: "detached" });
    assert.ok((await addresses()).includes(300));
    assert.match(page.url(), /address=300/, "the address of the page names the selection");

    const block = page.getByRole("form", { name: "Block at 300" });
    await block.getByLabel("First register").fill("310");
    await block.getByRole("button", { name: "Change …" }).click();
    await dialog.getByText("moves profile/zMax from 300 to 310").waitFor();
    await dialog.getByRole("button", { name: "Do it" }).click();
    await page.getByRole("form", { name: "Block at 310" }).waitFor();
    assert.ok((await addresses()).includes(310));

    await page.getByRole("button", { name: "Remove …" }).click();
    await dialog.getByText("removes profile/zMax from 310").waitFor();
    await dialog.getByRole("button", { name: "Do it" }).click();
    await dialog.waitFor({ state: "detached" });
    assert.ok(!(await addresses()).includes(310));

    await page.getByRole("button", { name: "Undo" }).click();
    await page.getByText("Taken back.").waitFor();
    assert.ok((await addresses()).includes(310));
    await host.send("POST", `${ASSEMBLY}/commands/remove`, { outputIdList: [{ outputId: 310 }] });
    await closePage(page);
});

test("a gap is closed and opened again", async () => {
    await host.send("POST", `${ASSEMBLY}/commands/add`, { blocks: [{ type: "MeasurementValue", outputId: 400, dataSource: "profile/zMax" }] });
    const page = await open();
    await page.getByRole("button", { name: "Compact …" }).click();
    await page.getByRole("dialog").getByText("moves profile/zMax from 400 to 185").waitFor();
    await page.getByRole("button", { name: "Do it" }).click();
    await until(async () => (await addresses()).includes(185), "the moved block");
    await page.getByRole("button", { name: "Undo" }).click();
    await until(async () => (await addresses()).includes(400), "the block at its old place");
    await host.send("POST", `${ASSEMBLY}/commands/remove`, { outputIdList: [{ outputId: 400 }] });
    await closePage(page);
});

test("a change that is refused says why before it is tried", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp?address=0" });
    await page.getByRole("form", { name: "Block at 0" }).getByRole("button", { name: "Remove …" }).click();
    const dialog = page.getByRole("dialog");
    await dialog.locator(".refusal").first().waitFor();
    assert.ok(await dialog.getByRole("button", { name: "Do it" }).isDisabled());
    await page.keyboard.press("Escape");
    await dialog.waitFor({ state: "detached" });
    assert.ok((await addresses()).includes(0));
    await closePage(page);
});

test("a block is chosen by keyboard, and the address leads a colleague to it", async () => {
    const page = await open();
    await page.getByRole("button", { name: "170–172" }).waitFor();
    await tabTo(page, "button", "170–172");
    await page.keyboard.press("Enter");
    await page.getByRole("form", { name: "Block at 170" }).waitFor();
    const second = await openPage(browser, host, { path: page.url().slice(host.url.length) });
    await second.getByRole("form", { name: "Block at 170" }).waitFor();
    await closePage(second);
    await closePage(page);
});

test("an output is added, renamed and removed", async () => {
    const page = await open({ path: "/ui/#/registers/AsciiTcp" });
    const names = async () => (await host.get("/controls/AsciiTcp/outputs")).map.map((one) => one.outputId);
    const dialog = page.getByRole("dialog");
    const agree = async () => {
        await dialog.getByRole("button", { name: "Do it" }).click();
        await dialog.waitFor({ state: "detached" });
    };
    await page.getByRole("button", { name: "Rename zMax" }).click();
    await page.getByLabel("New name").fill("<b>height</b>");
    await page.keyboard.press("Enter");
    await agree();
    assert.ok((await names()).includes("<b>height</b>"));
    await page.getByRole("cell", { name: "<b>height</b>", exact: true }).waitFor();
    await page.getByRole("button", { name: "Remove <b>height</b>" }).click();
    await agree();
    assert.ok(!(await names()).includes("<b>height</b>"));
    const add = page.getByRole("form", { name: "Add an output" });
    await add.getByLabel("Name").fill("zMax");
    await chooseSource(add, "profile/zMax");
    await add.getByRole("button", { name: "Add …" }).click();
    await agree();
    assert.ok((await names()).includes("zMax"));
    await closePage(page);
});

test("text ids that are renamed, removed and added are taken back", async () => {
    const page = await open({ path: "/ui/#/registers/AsciiTcp" });
    const entries = async () => JSON.stringify((await host.get("/controls/AsciiTcp/outputs")).map);
    const before = await entries();
    const changeAndUndo = async (change) => {
        await change();
        const dialog = page.getByRole("dialog");
        await dialog.getByRole("button", { name: "Do it" }).click();
        await dialog.waitFor({ state: "detached" });
        assert.notEqual(await entries(), before);
        await page.getByRole("button", { name: "Undo" }).click();
        await page.getByText("Taken back.").waitFor();
        assert.equal(await entries(), before);
    };
    await changeAndUndo(async () => {
        await page.getByRole("button", { name: "Rename zMin" }).click();
        await page.getByLabel("New name").fill("lowest");
        await page.keyboard.press("Enter");
    });
    await changeAndUndo(() => page.getByRole("button", { name: "Remove width" }).click());
    await changeAndUndo(async () => {
        const add = page.getByRole("form", { name: "Add an output" });
        await add.getByLabel("Name").fill("frame");
        await chooseSource(add, "profile/stamp");
        await add.getByRole("button", { name: "Add …" }).click();
    });
    await closePage(page);
});

test("each byte order of a block is shown as a PLC reads it, and undo goes back to that of the service", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp?address=176" });
    const form = page.getByRole("form", { name: "Block at 176" });
    const dialog = page.getByRole("dialog");
    const orderOf = async () => (await host.get(ASSEMBLY)).blocks.find((block) => block.outputId === 176).order;
    for (const order of ["CDAB", "BADC", "DCBA", "ABCD"]) {
        await form.getByLabel("Byte order").selectOption(order);
        await form.getByRole("button", { name: "Change …" }).click();
        await dialog.getByText("changes the entry at 176").or(dialog.getByText("This changes nothing.")).waitFor();
        await dialog.getByRole("button", { name: "Do it" }).click();
        await dialog.waitFor({ state: "detached" });
        assert.equal(await orderOf(), order);
        await page.getByRole("columnheader", { name: `Read as ${order}` }).waitFor();
        await until(async () => (await cells(page, 176, 3)) === hex(await host.registers(176, 3)), `the registers in the order ${order}`);
    }
    await form.getByLabel("Byte order").selectOption("DCBA");
    await form.getByRole("button", { name: "Change …" }).click();
    await dialog.getByRole("button", { name: "Do it" }).click();
    await until(async () => (await orderOf()) === "DCBA", "the order");
    await page.getByRole("button", { name: "Undo" }).click();
    await until(async () => (await orderOf()) === "ABCD", "the order before");
    await host.send("POST", `${ASSEMBLY}/commands/update`, { outputId: 176, newParams: { order: "default" } });
    await closePage(page);
});

test("each byte order of the service is shown as a PLC reads it", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp?address=176" });
    const texts = ["the high register", "the low register", "the high register .* in each register the low byte", "the low register .* in each register the low byte"];
    for (const [number, order] of ["ABCD", "CDAB", "BADC", "DCBA"].entries()) {
        await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: number } });
        await page.getByText(new RegExp(`byte order ${order}: ${texts[number]}`)).waitFor();
        await until(async () => (await cells(page, 176, 3)) === hex(await host.registers(176, 3)), `the registers in the order ${order}`);
    }
    await host.send("PUT", "/controls/ModbusTcp", { parameters: { registerOrder: 0 } });
    await closePage(page);
});

test("states, names and times are shown as people read them", async () => {
    const page = await open({ path: "/ui/#/registers/ModbusTcp?address=68" });
    const values = page.getByRole("group", { name: "Values of the block" });
    const now = (title) => values.locator(`[data-field="${title}"]`);
    await now("Run state").getByText("scanning").waitFor();
    await now("Name of the job").getByText("default").waitFor();
    await until(async () => /^\d\d:\d\d:\d\d$/.test(await now("Up-time").innerText()), "the up-time");
    assert.equal(await cells(page, 72, 9), hex(await host.registers(72, 9)), "run state and job");
    await page.getByRole("button", { name: "140–149" }).click();
    await now("Alignment").getByText("not aligned").waitFor();
    assert.equal(await cells(page, 148, 2), hex(await host.registers(148, 2)), "alignment and laser");
    await page.getByRole("button", { name: "150–169" }).click();
    const time = now("Time").locator("time");
    assert.match(await time.getAttribute("title"), /^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d UTC$/);
    assert.ok(Math.abs(Date.parse(await time.getAttribute("datetime")) - Date.now()) < 60_000);
    await now("Frame").getByText(/^frame/).waitFor();
    await now("Digital inputs").getByText("first low, second low").waitFor();
    await page.locator('[data-value="170"]').getByText("mm").waitFor();
    await checkAccess(page);
    await closePage(page);
});

test("the registers of a stamp are those that a PLC reads", async () => {
    const own = await new Host().start("--start", "--still");
    await own.send("POST", "/sensor/commands/stop", {});
    await until(async () => (await own.get("/sensor")).state === "ready", "the stop");
    const page = await openPage(browser, own, { path: "/ui/#/registers/ModbusTcp?address=150" });
    await until(async () => (await cells(page, 154, 13)) === hex(await own.registers(154, 13)), "encoder, time, frame and inputs");
    await until(async () => (await cells(page, 170, 15)) === hex(await own.registers(170, 15)), "the measurements");
    await closePage(page);
    await own.end();
});

test("a result is the one that the service took last, with its age", async () => {
    const own = await new Host().start("--start", "--still", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0");
    const page = await openPage(browser, own, { path: "/ui/#/registers/ModbusTcp" });
    const shown = page.locator('[data-value="170"]');
    await shown.getByText(/^25.000 mm$/).waitFor();
    await own.send("POST", "/sensor/commands/stop", {});
    await shown.getByText(/^25.000 mm, 00:00:\d\d ago$/).waitFor();
    await page.goto(`${own.url}/ui/#/registers/AsciiTcp`);
    await page.getByRole("row", { name: /zMax/ }).getByText("no result yet").waitFor(); // the service has no client
    await closePage(page);
    await own.end();
});

test("a block of several sources takes a list", async () => {
    const page = await open();
    const add = page.getByRole("form", { name: "Add a block" });
    await add.getByLabel("Content").selectOption("DecisionBits");
    await add.getByLabel("First register").fill("500");
    await add.getByLabel("Data source").fill("profile/zMax, profile/width");
    await add.getByRole("button", { name: "Add …" }).click();
    await page.getByRole("dialog").getByText("adds profile/zMax, profile/width at 500").waitFor();
    await page.getByRole("button", { name: "Do it" }).click();
    const block = page.getByRole("form", { name: "Block at 500" });
    await block.waitFor();
    assert.equal(await block.getByLabel("Data source").inputValue(), "profile/zMax, profile/width");
    await page.getByRole("button", { name: "Undo" }).click();
    await until(async () => !(await addresses()).includes(500), "the undo");
    await closePage(page);
});

for (const [width, dark] of [[360, false], [1920, true]]) {
    test(`the registers fit ${width} pixels`, async () => {
        const page = await open({ width, dark, path: "/ui/#/registers/ModbusTcp?address=170" });
        await page.getByRole("form", { name: "Block at 170" }).waitFor();
        await checkWidth(page);
        await checkAccess(page);
        await closePage(page);
    });
}
