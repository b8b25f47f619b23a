// What holds for every view: it is accessible, fits narrow and wide windows, is reached by keyboard, and greys out its
// values without a connection.
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, tabTo, until } from "./browser.mjs";
import { Host } from "./host.mjs";

const VIEWS = [
    { name: "overview", title: "Overview", shown: (page) => page.getByText("Scanning") },
    { name: "live", title: "Live", shown: (page) => page.getByText(/^Frame \d/) },
    { name: "services/AsciiTcp", title: "Services", shown: (page) => page.getByRole("form", { name: "Parameters" }) },
    { name: "registers/ModbusTcp?address=150", title: "Registers", shown: (page) => page.getByRole("form", { name: "Block at 150" }) },
    { name: "registers/AsciiTcp", title: "Registers", shown: (page) => page.getByRole("form", { name: "Add an output" }) },
    { name: "jobs", title: "Jobs", shown: (page) => page.getByRole("rowheader", { name: "default" }) },
    { name: "events", title: "Events", shown: (page) => page.getByRole("group", { name: "Events" }) },
    { name: "metrics", title: "Metrics", shown: (page) => page.getByRole("group", { name: "Numbers" }) },
    { name: "security/tokens", title: "Security", shown: (page) => page.getByRole("form", { name: "Make a token" }) },
];
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

for (const [width, dark] of [[360, true], [1920, false]]) {
    test(`each view is accessible and fits ${width} pixels in ${dark ? "dark" : "light"} colours`, async () => {
        const page = await openPage(browser, host, { path: "/ui/#/none", width, dark });
        for (const { name, shown } of VIEWS) {
            await page.goto(`${host.url}/ui/#/${name}`);
            await shown(page).first().waitFor();
            await until(async () => (await page.getByText("Reading …").count()) === 0, name);
            await checkWidth(page);
            await checkAccess(page);
        }
        await closePage(page);
    });
}

test("each view is reached by keyboard alone, and its heading gets the focus", async () => {
    const page = await openPage(browser, host, { path: "/ui/#/none" });
    for (const title of new Set(VIEWS.map((view) => view.title))) {
        await page.reload(); // the keyboard starts at the top
        await page.getByRole("heading", { level: 1 }).waitFor();
        await tabTo(page, "link", title);
        await page.keyboard.press("Enter");
        const heading = page.getByRole("heading", { name: title, level: 1 });
        await until(() => heading.evaluate((element) => element === document.activeElement), `the focus on ${title}`);
    }
    await closePage(page);
});

test("each view greys out its values without a connection, and shows new ones after it", async () => {
    const own = await new Host().start("--start", "--still");
    const values = VIEWS.filter(({ title }) => title !== "Security"); // it has no values of the sensor
    const pages = [];
    for (const { name, shown } of values) {
        const page = await openPage(browser, own, { path: `/ui/#/${name}`, expectsLoss: true });
        await shown(page).first().waitFor();
        pages.push(page);
    }
    await own.stop("SIGKILL");
    for (const page of pages) {
        await page.getByText(/No connection for/).waitFor();
        await page.locator("section.old").first().waitFor();
    }
    await own.start("--start", "--still");
    for (const page of pages) {
        await page.locator(".connection").getByText("Connected").waitFor();
        await page.locator("section.old").first().waitFor({ state: "detached" });
        await closePage(page);
    }
    await own.end();
});
