import { useEffect, useState } from "preact/hooks";
import { request, sentenceOf } from "../../client/rest";
import { ActionButton, Dialog, tell } from "../../parts/basics";
import type { Command, Entry, Preview } from "./undo";

interface Props {
    title: string;
    base: string; // the map or the assembly
    command: Command;
    fingerprint: number | null; // the present one
    undoOf: (preview: Preview) => Command[]; // the commands that lead back
    onDone: () => void;
    onClose: () => void;
}

/// Shows what a command would do, and does it when the person agrees. Nothing changes before.
export function Consequence({ title, base, command, fingerprint, undoOf, onDone, onClose }: Props) {
    const [preview, setPreview] = useState<Preview | null>(null);
    const [fault, setFault] = useState("");
    useEffect(() => {
        const end = new AbortController();
        request("POST", `${base}/preview`, { body: command, signal: end.signal }).then(
            (reply) => setPreview(reply.json as Preview),
            (error: unknown) => setFault(sentenceOf(error)),
        );
        return () => end.abort();
    }, []);
    const carryOut = async () => {
        try {
            await request("POST", `${base}/commands/${command.command}`, { body: command.arguments, ifMatch: preview?.etag });
        } catch (error) {
            setFault(sentenceOf(error));
            return;
        }
        const undo = preview === null ? [] : undoOf(preview); // the map before, as this dialog has it
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

async function runAll(base: string, commands: Command[]): Promise<void> {
    for (const { command, arguments: body } of commands) {
        await request("POST", `${base}/commands/${command}`, { body });
    }
}
