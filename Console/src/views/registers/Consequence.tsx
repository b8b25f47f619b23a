import { useEffect, useState } from "preact/hooks";
import { request, sentenceOf } from "../../client/rest";
import { ActionButton, Dialog, tell } from "../../parts/basics";

interface Entry {
    outputId: number | string;
    registers?: number;
    type?: string;
    displayName?: string;
    source?: string;
}

export interface Preview {
    etag: string;
    refused: { detail: string } | null;
    commands: { refusedEntries: { entry: number; text: string }[] }[];
    added: Entry[];
    removed: Entry[];
    moved: (Entry & { from: number | string; to: number | string })[];
    renamed: { outputId: number | string }[];
    fingerprint: number | null;
}

export interface Command {
    command: string;
    arguments: unknown;
}

interface Props {
    title: string;
    base: string; // the map or the assembly
    command: Command;
    fingerprint: number | null; // the present one
    onDone: () => void;
    onClose: () => void;
}

/// Shows what a command would do, and does it when the person agrees. Nothing changes before.
export function Consequence({ title, base, command, fingerprint, onDone, onClose }: Props) {
    const [preview, setPreview] = useState<Preview | null>(null);
    const [fault, setFault] = useState("");
    useEffect(() => {
        request("POST", `${base}/preview`, { body: command }).then(
            (reply) => setPreview(reply.json as Preview),
            (error: unknown) => setFault(sentenceOf(error)),
        );
    }, []);
    const carryOut = async () => {
        try {
            await request("POST", `${base}/commands/${command.command}`, { body: command.arguments, ifMatch: preview?.etag });
        } catch (error) {
            setFault(sentenceOf(error));
            return;
        }
        const undo = preview === null ? [] : undoOf(preview);
        tell("The map is changed.", undo.length === 0 ? undefined : () => runAll(base, undo));
        onDone();
        onClose();
    };
    const isRefused = fault !== "" || (preview !== null && preview.refused !== null);
    return (
        <Dialog title={title} onClose={onClose}>
            {preview === null && fault === "" && <p class="quiet">Reading …</p>}
            {preview !== null && <Effects preview={preview} present={fingerprint} />}
            {fault !== "" && <p class="refusal" role="alert">{fault}</p>}
            <div class="row end">
                <button type="button" onClick={onClose}>Cancel</button>
                <ActionButton needs="engineer" class="primary" isDisabled={isRefused || preview === null} action={carryOut}>Do it</ActionButton>
            </div>
        </Dialog>
    );
}

function Effects({ preview, present }: { preview: Preview; present: number | null }) {
    const refusals = preview.commands.flatMap((command) => command.refusedEntries);
    const hasEffect = preview.added.length + preview.removed.length + preview.moved.length + preview.renamed.length > 0;
    return (
        <div class="effects">
            {preview.refused !== null && <p class="refusal" role="alert">{preview.refused.detail}</p>}
            {refusals.map((one) => <p key={one.entry} class="refusal">{one.text}</p>)}
            {!hasEffect && preview.refused === null && <p>This changes nothing.</p>}
            <ul>
                {preview.added.map((one) => <li key={`a${one.outputId}`}>adds {nameOf(one)} at {one.outputId}</li>)}
                {preview.removed.map((one) => <li key={`r${one.outputId}`}>removes {nameOf(one)} from {one.outputId}</li>)}
                {preview.moved.map((one) => <li key={`m${one.from}`}>moves {nameOf(one)} from {one.from} to {one.to}</li>)}
                {preview.renamed.map((one) => <li key={`n${one.outputId}`}>changes the entry at {one.outputId}</li>)}
            </ul>
            {preview.fingerprint !== null && present !== null && preview.fingerprint !== present && (
                <p class="warning">PLC programs that use this map must be changed too: its fingerprint becomes {preview.fingerprint} (now {present}).</p>
            )}
        </div>
    );
}

function nameOf(entry: Entry): string {
    return entry.source !== undefined && entry.source !== "" ? entry.source : (entry.displayName ?? entry.type ?? "an entry");
}

/// The commands that lead back to the map before. Empty where no commands can.
function undoOf(preview: Preview): Command[] {
    const addressOf = (id: number | string) => Number(id);
    const back: Command[] = [];
    if (preview.renamed.length > 0 || [...preview.moved, ...preview.removed].some((one) => typeof one.outputId === "string")) {
        return [];
    }
    if (preview.added.length > 0) {
        back.push({ command: "remove", arguments: { outputIdList: preview.added.map(({ outputId }) => ({ outputId })) } });
    }
    const down = preview.moved.filter((one) => one.from > one.to).sort((one, other) => addressOf(other.from) - addressOf(one.from));
    const up = preview.moved.filter((one) => one.from < one.to).sort((one, other) => addressOf(one.from) - addressOf(other.from));
    for (const { from, to, source } of [...down, ...up]) {
        back.push({ command: "update", arguments: { outputId: to, newParams: { outputId: from, ...(source === undefined ? {} : { dataSource: source }) } } });
    }
    if (preview.removed.length > 0) {
        const blocks = preview.removed.map(({ type, outputId, source }) => ({ type, outputId, ...(source === undefined ? {} : { dataSource: source }) }));
        back.push({ command: "add", arguments: { blocks } });
    }
    return back;
}

async function runAll(base: string, commands: Command[]): Promise<void> {
    for (const { command, arguments: body } of commands) {
        await request("POST", `${base}/commands/${command}`, { body });
    }
}
