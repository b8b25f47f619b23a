// The frame of the console: its way to the browser, its navigation, the connection, the login.
import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, tabTo } from "./browser.mjs";
import { Host } from "./host.mjs";

const PASSWORD = "correct horse battery";
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

test("a browser that opens the root is led to the console", async () => {
    const page = await openPage(browser, host, { path: "/" });
    await page.getByRole("heading", { name: "Overview", level: 1 }).waitFor();
    assert.equal(new URL(page.url()).pathname, "/ui/");
    assert.equal(await page.title(), "Overview – ZuControl");
    await closePage(page);
});

test("a program that opens the root gets the document", async () => {
    assert.equal((await host.get("/")).product, "ZuControl");
});

test("the page forbids inline code and code from texts", async () => {
    const page = await openPage(browser, host);
    await page.getByText("All is well").waitFor();
    const outcome = await page.evaluate(() => {
        const script = document.createElement("script");
        const tries = { inline: "refused", text: "refused" };
        window.addEventListener("inline-ran", () => (tries.inline = "ran"));
        try {
            script.text = "dispatchEvent(new Event('inline-ran'))";
            document.body.append(script);
        } catch { /* Trusted Types refuse the assignment */ }
        try {
            document.body.insertAdjacentHTML("beforeend", "<b>text</b>");
            tries.text = "taken";
        } catch { /* as above */ }
        return tries;
    });
    assert.deepEqual(outcome, { inline: "refused", text: "refused" });
    await page.context().close(); // the refusals are errors of the page
});

test("all files together are small, and their licences are there", async () => {
    const page = await openPage(browser, host);
    await page.getByText("All is well").waitFor();
    const sizes = await page.evaluate(() => performance.getEntriesByType("resource").concat(performance.getEntriesByType("navigation"))
        .filter((entry) => entry.name.includes("/ui/")).map((entry) => entry.transferSize));
    assert.ok(sizes.length >= 3, `${sizes}`);
    assert.ok(sizes.reduce((sum, size) => sum + size) <= 150_000, `${sizes}`);
    const licences = await page.evaluate(async () => (await fetch("/ui/licences.txt")).text());
    for (const words of ["preact", "MIT", "Copyright"]) {
        assert.ok(licences.includes(words), words);
    }
    await closePage(page);
});

test("without scripts there is a sentence", async () => {
    const page = await openPage(browser, host, { javaScriptEnabled: false });
    await page.locator("p.noscript", { hasText: "This page needs JavaScript." }).waitFor();
    await closePage(page);
});

test("a cut connection is told, and the page comes back by itself", async () => {
    const own = await new Host().start();
    const page = await openPage(browser, own, { expectsLoss: true });
    await page.getByText("All is well").waitFor();
    await own.stop("SIGKILL");
    await page.getByText(/No connection for/).waitFor();
    await page.locator("section.old", { hasText: "Health" }).waitFor();
    await checkAccess(page);
    await own.start();
    await page.getByText("Connected").waitFor();
    await page.locator("section:not(.old)", { hasText: "Health" }).waitFor();
    await closePage(page);
    await own.end();
});

test("where there are users, the console asks for a login", async () => {
    const own = await new Host().start();
    await own.send("POST", "/users", { name: "anna", role: "administrator", password: PASSWORD });
    const page = await openPage(browser, own, { path: "/ui/#/overview" });
    await page.getByRole("heading", { name: "Log in" }).waitFor();
    await checkAccess(page);
    await page.getByLabel("Name").fill("anna");
    await page.getByLabel("Password").fill("a wrong password");
    await page.getByRole("button", { name: "Log in" }).click();
    await page.getByRole("alert").waitFor();
    await page.getByLabel("Password").fill(PASSWORD);
    await page.keyboard.press("Enter");
    await page.getByRole("heading", { name: "Overview", level: 1 }).waitFor();
    await page.getByText("All is well").waitFor();
    await page.getByRole("button", { name: "Log out" }).click();
    await page.getByRole("heading", { name: "Log in" }).waitFor();
    await closePage(page);
    await own.end();
});

test("the notice before the login is shown as text", async () => {
    const own = new Host();
    const file = join(own.data, "notice.txt");
    writeFileSync(file, "Authorised staff only. <img src=x onerror=alert(1)>");
    await own.start("--login-notice", file);
    await own.send("POST", "/users", { name: "anna", role: "administrator", password: PASSWORD });
    const page = await openPage(browser, own);
    await page.getByText("Authorised staff only. <img src=x onerror=alert(1)>").waitFor();
    assert.equal(await page.locator("main img").count(), 0);
    await checkAccess(page);
    await closePage(page);
    await own.end();
});

test("the frame works by keyboard", async () => {
    const page = await openPage(browser, host);
    await page.getByText("All is well").waitFor();
    await page.keyboard.press("Tab");
    await page.keyboard.press("Enter"); // "To the content"
    assert.equal(await page.evaluate(() => document.activeElement.id), "main");
    await tabTo(page, "link", "Modbus TCP");
    await closePage(page);
});

for (const [width, dark] of [[360, false], [1920, false], [1280, true]]) {
    test(`the overview fits ${width} pixels in ${dark ? "dark" : "light"} colours`, async () => {
        const page = await openPage(browser, host, { width, dark });
        await page.getByText("All is well").waitFor();
        await checkWidth(page);
        await checkAccess(page);
        await closePage(page);
    });
}
