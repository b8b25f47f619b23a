import type { Block, OutputMap } from "./layout";

/// An entry of a preview.
export interface Entry {
    outputId: number | string;
    registers?: number;
    type?: string;
    displayName?: string;
    source?: string;
}

/// What a command would do, as "/preview" shows it.
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

/// The commands that lead back to an assembly with these blocks.
export function undoOfBlocks(preview: Preview, blocks: Block[]): Command[] {
    const commands: Command[] = preview.added.length === 0 ? []
        : [{ command: "remove", arguments: { outputIdList: preview.added.map(({ outputId }) => ({ outputId })) } }];
    const stay = preview.renamed
        .filter(({ outputId }) => !preview.moved.some((one) => one.to === outputId || one.from === outputId))
        .map(({ outputId }) => ({ from: outputId, to: outputId }));
    for (const { from, to } of [...inOrder(preview.moved), ...stay]) {
        const before = blocks.find((block) => block.outputId === from);
        commands.push({ command: "update", arguments: { outputId: to, newParams: { outputId: from, ...settingsOf(before) } } });
    }
    const removed = blocks.filter((block) => preview.removed.some(({ outputId }) => outputId === block.outputId));
    if (removed.length > 0) {
        const again = removed.map((block) => ({ type: block.type, outputId: block.outputId, ...settingsOf(block) }));
        commands.push({ command: "add", arguments: { blocks: again } });
    }
    return commands;
}

/// What a block has beside its type and its address.
function settingsOf(block: Block | undefined) {
    if (block === undefined) {
        return {};
    }
    const { dataSource, scannerId, order } = block;
    return {
        ...(dataSource === undefined ? {} : { dataSource }),
        ...(scannerId === undefined || scannerId === "" ? {} : { scannerId }),
        ...(order === undefined ? {} : { order: order === "" ? "default" : order }),
    };
}

/// The commands that lead back to an output map with these entries.
export function undoOfOutputs(preview: Preview, map: OutputMap["map"]): Command[] {
    const removed = map.filter((entry) => preview.removed.some(({ outputId }) => outputId === entry.outputId));
    return [
        ...preview.added.map(({ outputId }) => ({ command: "remove", arguments: { outputId } })),
        ...inOrder(preview.moved).map(({ from, to }) => ({ command: "updateId", arguments: { map: [{ outputId: to }, { outputId: from }] } })),
        ...removed.map(({ outputId, source }) => ({ command: "add", arguments: { outputId, source } })),
    ];
}

/// The moved entries in an order in which each finds its old place free. Entries with texts as ids move one at a time.
function inOrder(moved: Preview["moved"]): Preview["moved"] {
    const down = moved.filter((one) => Number(one.from) > Number(one.to)).sort((one, other) => Number(other.from) - Number(one.from));
    const up = moved.filter((one) => !(Number(one.from) > Number(one.to))).sort((one, other) => Number(one.from) - Number(other.from));
    return [...down, ...up];
}
