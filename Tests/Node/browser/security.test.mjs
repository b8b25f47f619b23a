// Security: users, tokens, sessions, certificates and the trail.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { checkAccess, checkWidth, closePage, launch, openPage, until } from "./browser.mjs";
import { Host } from "./host.mjs";

const PASSWORD = "correct horse battery";
let browser;
let host;
let page;

before(async () => {
    browser = await launch();
    host = await new Host().start();
    page = await openPage(browser, host, { path: "/ui/#/security/users" });
});

after(async () => {
    await browser.close();
    await host.end();
});

const part = (name) => page.getByRole("list", { name: "Parts" }).getByRole("link", { name }).click();

async function addUser(name) {
    await page.getByLabel("Name").fill(name);
    await page.getByLabel("Password").fill(PASSWORD);
    await page.getByRole("button", { name: "Add", exact: true }).click();
}

async function logIn(name) {
    await page.getByRole("button", { name: "Log in" }).waitFor(); // until then, the fields are those of a new user
    await page.getByLabel("Name").fill(name);
    await page.getByLabel("Password").fill(PASSWORD);
    await page.getByRole("button", { name: "Log in" }).click();
}

test("a short password is refused with the reason", async () => {
    await page.getByText("Everybody on this machine is an administrator").waitFor();
    await page.getByLabel("Name").fill("anna");
    await page.getByLabel("Password").fill("short");
    await page.getByRole("button", { name: "Add", exact: true }).click();
    await page.getByRole("alert").getByText(/15/).waitFor();
});

test("the first user closes the host, and logs in", async () => {
    await addUser("anna");
    await page.getByRole("heading", { name: "Log in" }).waitFor();
    await logIn("anna");
    await page.getByRole("rowheader", { name: "anna" }).waitFor();
    await page.getByText("anna (administrator)").waitFor();
});

test("users are added, changed and removed", async () => {
    await addUser("bert");
    await page.getByRole("rowheader", { name: "bert" }).waitFor();
    await page.getByLabel("Role of bert").selectOption("engineer");
    await page.getByRole("button", { name: "Disable bert" }).click();
    await page.getByRole("button", { name: "Enable bert" }).waitFor();
    await page.getByRole("button", { name: "Remove bert" }).click();
    await page.getByRole("dialog").getByRole("button", { name: "Remove" }).click();
    await page.getByRole("rowheader", { name: "bert" }).waitFor({ state: "detached" });
});

test("a token is made, shown once, works, and is revoked", async () => {
    await part("Tokens");
    await page.getByLabel("Name of the program").fill("line 4");
    await page.getByRole("button", { name: "Make", exact: true }).click();
    const token = await page.locator("code").innerText();
    const read = () => fetch(`${host.url}/jobs`, { headers: { Authorization: `Bearer ${token}` } });
    assert.equal((await read()).status, 200);
    await page.getByRole("button", { name: "Revoke line 4" }).click();
    await page.getByRole("dialog").getByText("This cannot be undone.").waitFor();
    assert.equal((await read()).status, 200, "nothing changes before the answer");
    await page.getByRole("dialog").getByRole("button", { name: "Revoke" }).click();
    await page.getByText("The token line 4 is revoked.").waitFor();
    assert.equal((await read()).status, 401);
});

test("the own session is listed", async () => {
    await part("Sessions");
    await page.getByText("this session").waitFor();
});

test("the trail tells what was done", async () => {
    await part("Trail");
    await page.getByRole("cell", { name: "POST /tokens" }).first().waitFor();
    // The trail writes its entries a moment after the requests, so the view asks until it has this one.
    await until(async () => {
        await page.getByLabel("What").fill("");
        await page.getByLabel("What").fill("DELETE");
        await until(async () => (await page.getByRole("cell", { name: "POST /tokens" }).count()) === 0, "the filter");
        return (await page.getByRole("cell", { name: "DELETE /tokens/line%204" }).count()) > 0;
    }, "the entry");
    await until(async () => (await page.getByRole("cell", { name: "POST /tokens" }).count()) === 0, "the filter");
});

test("the trail goes on when its page is full", async () => {
    await part("Trail");
    await page.getByLabel("What").fill("full-");
    const remove = (first, last) => page.evaluate(async ([from, to]) => {
        const { crossSiteToken } = await (await fetch("/session")).json();
        for (let number = from; number <= to; ++number) {
            await fetch(`/jobs/full-${number}`, { method: "DELETE", headers: { "X-CSRF-Token": crossSiteToken } }); // there is none
        }
    }, [first, last]);
    const entry = (number) => page.getByRole("cell", { name: `DELETE /jobs/full-${number}`, exact: true });
    await remove(1, 1);
    await entry(1).waitFor();
    await remove(2, 105); // a page has 100 entries
    await entry(105).waitFor();
    await remove(106, 106);
    await entry(106).waitFor();
});

test("each part is accessible and fits 360 pixels", async () => {
    await page.setViewportSize({ width: 360, height: 800 });
    for (const name of ["Users", "Tokens", "Sessions", "Certificates", "Trail"]) {
        await part(name);
        await page.getByRole("region").first().waitFor();
        await until(async () => (await page.getByText("Reading …").count()) === 0, name);
        await checkWidth(page);
        await checkAccess(page);
    }
});

test("a viewer sees no users, and cannot change a service", async () => {
    await page.setViewportSize({ width: 1280, height: 800 });
    await part("Users");
    await addUser("vera");
    await page.getByRole("rowheader", { name: "vera" }).waitFor();
    await page.getByRole("button", { name: "Log out" }).click();
    await logIn("vera");
    await page.getByText("This needs the role administrator.").waitFor();
    await page.goto(`${host.url}/ui/#/services/ModbusTcp`);
    await page.getByText("A change needs the role engineer.").waitFor();
    assert.ok(await page.getByRole("button", { name: "Disable" }).isDisabled());
    const refused = [];
    page.on("response", (response) => response.status() === 403 && refused.push(response.url()));
    await page.getByRole("link", { name: "Events" }).click();
    await page.getByText("The lines of the log need the role engineer.").waitFor();
    await page.waitForResponse((response) => response.url().endsWith("/operations"));
    assert.deepEqual(refused, [], "refused requests would fill the trail");
    await closePage(page);
});
