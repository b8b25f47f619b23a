// Checks the types of the console, bundles it, and writes its files as a C++ source of the host.
//
// usage: node build.mjs OUTPUT.cpp
//
// Each file is compressed here: the host sends the bytes as they are. Names carry a hash of the content, so that a browser
// keeps a file for as long as it stays the same.
import { spawnSync } from "node:child_process";
import { createHash } from "node:crypto";
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";
import { build } from "esbuild";

const MAX_COMPRESSED_BYTES = 150_000;
const root = dirname(fileURLToPath(import.meta.url));
const output = process.argv[2];
if (output === undefined) {
    console.error("usage: node build.mjs OUTPUT.cpp");
    process.exit(2);
}

function checkTypes() {
    const done = spawnSync(process.execPath, [join(root, "node_modules/typescript/bin/tsc"), "-p", root], { encoding: "utf8" });
    if (done.status !== 0) {
        console.error(done.stdout + done.stderr);
        process.exit(1);
    }
}

async function bundle() {
    const made = await build({
        absWorkingDir: root,
        entryPoints: { console: "src/main.tsx" },
        bundle: true,
        minify: true,
        format: "esm",
        target: ["chrome100", "firefox100", "safari15.4"],
        jsx: "automatic",
        jsxImportSource: "preact",
        entryNames: "[name]-[hash]",
        outdir: "out",
        write: false,
        metafile: true,
        legalComments: "none", // the notices are in licences.txt
        logLevel: "warning",
    });
    const find = (suffix) => made.outputFiles.find((file) => file.path.endsWith(suffix));
    return { script: find(".js"), style: find(".css"), packages: packagesOf(made.metafile) };
}

/// The packages of which the bundle has a part.
function packagesOf(metafile) {
    const names = Object.keys(metafile.inputs)
        .map((path) => /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(path)?.[1])
        .filter((name) => name !== undefined);
    return [...new Set(names)].sort();
}

function licences(packages) {
    const notices = packages.map((name) => {
        const folder = join(root, "node_modules", name);
        const description = JSON.parse(readFileSync(join(folder, "package.json"), "utf8"));
        const text = readFileSync(join(folder, "LICENSE"), "utf8").trim();
        return `${name} ${description.version} (${description.license})\n\n${text}\n`;
    });
    return `The console contains parts of these packages.\n\n${notices.join(`\n${"-".repeat(72)}\n\n`)}`;
}

function source(files) {
    const arrays = files.map(({ content }, index) => {
        const bytes = [...content].map(String);
        const lines = [];
        for (let start = 0; start < bytes.length; start += 32) {
            lines.push(`    ${bytes.slice(start, start + 32).join(",")},`);
        }
        return `constexpr unsigned char FILE_${index}[] = {\n${lines.join("\n")}\n};\n`;
    });
    const entries = files.map(
        ({ name, type, isImmutable }, index) =>
            `    {"${name}", "${type}", {reinterpret_cast<char const*>(FILE_${index}), sizeof(FILE_${index})}, ${isImmutable}},`,
    );
    return `#include "Host/Console/ConsoleFiles.h"

namespace ZuHost::ConsoleFiles
{

namespace
{

${arrays.join("\n")}
} // namespace

std::span<File const> All() noexcept
{
    static File const FILES[] = {
${entries.map((entry) => `    ${entry}`).join("\n")}
    };
    return FILES;
}

} // namespace ZuHost::ConsoleFiles
`;
}

checkTypes();
const { script, style, packages } = await bundle();
const icon = readFileSync(join(root, "src/icon.svg"));
const iconName = `icon-${createHash("sha256").update(icon).digest("hex").slice(0, 8).toUpperCase()}.svg`;
const nameOf = (file) => file.path.split("/").at(-1);
const page = readFileSync(join(root, "src/index.html"), "utf8")
    .replace("{{script}}", nameOf(script))
    .replace("{{style}}", nameOf(style))
    .replace("{{icon}}", iconName);
const files = [
    { name: "index.html", type: "text/html; charset=utf-8", text: page, isImmutable: false },
    { name: nameOf(script), type: "text/javascript; charset=utf-8", text: script.contents, isImmutable: true },
    { name: nameOf(style), type: "text/css; charset=utf-8", text: style.contents, isImmutable: true },
    { name: iconName, type: "image/svg+xml", text: icon, isImmutable: true },
    { name: "licences.txt", type: "text/plain; charset=utf-8", text: licences(packages), isImmutable: false },
].map((file) => ({ ...file, content: gzipSync(file.text, { level: 9 }) }));

const total = files.reduce((sum, file) => sum + file.content.length, 0);
if (total > MAX_COMPRESSED_BYTES) {
    console.error(`The console has ${total} compressed bytes; ${MAX_COMPRESSED_BYTES} are allowed.`);
    process.exit(1);
}
mkdirSync(dirname(output), { recursive: true });
writeFileSync(output, source(files));
console.log(`console: ${total} bytes compressed`);
