import { useEffect, useId, useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { route, setQuery } from "../../client/route";
import { type DataSource, deliveredOf } from "../../client/sensor";
import { mayActAs } from "../../client/rest";
import { Card } from "../../parts/basics";
import { numberText } from "../../parts/format";
import { type Command, Consequence } from "./Consequence";
import { type Assembly, type Block, lengthOf, rowsOf, wordsOf } from "./layout";

interface Props {
    base: string;
    assembly: Assembly;
    isLittleEndian: boolean;
    sources: DataSource[];
    isOld: boolean;
    fingerprint: number | null;
}

interface Wanted {
    title: string;
    command: Command;
    selects: string; // the address that is selected afterwards
}

const NARROW = "(max-width: 760px)";

/// The registers of an assembly: a grid of addresses, a table of blocks, and the commands for them.
export function AssemblyView(props: Props) {
    const { assembly, base, isOld, fingerprint } = props;
    const [wanted, setWanted] = useState<Wanted | null>(null);
    const { query } = useObservable(route);
    const address = query.get("address") ?? "";
    const selected = assembly.blocks.find((block) => isIn(block, assembly, Number(address === "" ? -1 : address)));
    const order = props.isLittleEndian ? "little endian: the low register of a number comes first" : "big endian: the high register of a number comes first";
    return (
        <>
            <Card
                title={assembly.displayName}
                isOld={isOld}
                actions={<button type="button" disabled={!mayActAs("engineer")} onClick={() => setWanted(COMPACT)}>Compact …</button>}
            >
                <p class="quiet">
                    Registers {assembly.attributes.outputIdMin} to {assembly.attributes.outputIdMax}, {order}.
                    {fingerprint !== null && <> Fingerprint <span class="number">{fingerprint}</span>.</>}
                </p>
                <Grid {...props} selected={selected} />
            </Card>
            <div class="grid">
                <BlockTable {...props} selected={selected} />
                <div class="stack">
                    {selected !== undefined && <BlockCard key={selected.outputId} {...props} block={selected} want={setWanted} />}
                    <AddCard {...props} want={setWanted} />
                </div>
            </div>
            {wanted !== null && (
                <Consequence
                    title={wanted.title}
                    base={base}
                    command={wanted.command}
                    fingerprint={fingerprint}
                    onDone={() => setQuery({ address: wanted.selects })}
                    onClose={() => setWanted(null)}
                />
            )}
        </>
    );
}

const COMPACT: Wanted = { title: "Move all blocks together", command: { command: "compact", arguments: { startingOutputId: 0 } }, selects: "" };

function isIn(block: Block, assembly: Assembly, address: number): boolean {
    return address >= block.outputId && address < block.outputId + lengthOf(assembly, block.type);
}

function hex(word: number): string {
    return word.toString(16).toUpperCase().padStart(4, "0");
}

/// Whether the window is narrow; the component is drawn anew when that changes.
function useNarrow(): boolean {
    const [isNarrow, setNarrow] = useState(matchMedia(NARROW).matches);
    useEffect(() => {
        const list = matchMedia(NARROW);
        const note = () => setNarrow(list.matches);
        list.addEventListener("change", note);
        return () => list.removeEventListener("change", note);
    }, []);
    return isNarrow;
}

/// A cell for each register. The table beside it has the same for screen readers and the keyboard.
function Grid({ assembly, isLittleEndian, sources, selected }: Props & { selected: Block | undefined }) {
    const columns = useNarrow() ? 10 : 20;
    const cells = new Map<number, { block: Block; number: number; word: number | undefined }>();
    assembly.blocks.forEach((block, number) => {
        const words = wordsOf(block, sources.find((one) => one.id === block.dataSource), isLittleEndian);
        for (let offset = 0; offset < lengthOf(assembly, block.type); ++offset) {
            cells.set(block.outputId + offset, { block, number, word: words?.[offset] });
        }
    });
    return (
        <div class="registers" aria-hidden="true">
            {rowsOf(assembly, columns).map(({ start }) => (
                <div class="addresses" key={start}>
                    <span class="address">{start}</span>
                    {Array.from({ length: columns }, (_, column) => {
                        const cell = cells.get(start + column);
                        const classes = cell === undefined ? "cell" : `cell used tint${cell.number % 6}`;
                        const isFirst = cell?.block.outputId === start + column;
                        return (
                            <span
                                key={column}
                                class={`${classes}${isFirst ? " first" : ""}${cell !== undefined && cell.block === selected ? " selected" : ""}`}
                                title={cell === undefined ? `${start + column}: free` : `${start + column}: ${titleOf(cell.block)}`}
                                onClick={() => setQuery({ address: String(start + column) })}
                            >
                                {cell?.word === undefined ? "" : hex(cell.word)}
                            </span>
                        );
                    })}
                </div>
            ))}
        </div>
    );
}

function titleOf(block: Block): string {
    return block.dataSource === undefined || block.dataSource === "" ? block.displayName : `${block.displayName} of ${block.dataSource}`;
}

function BlockTable({ assembly, isLittleEndian, sources, selected, isOld }: Props & { selected: Block | undefined }) {
    return (
        <Card title="Blocks" isOld={isOld}>
            <div class="tablebox" tabIndex={0} role="group" aria-label="Blocks">
                <table>
                    <thead>
                        <tr>
                            <th scope="col">Registers</th>
                            <th scope="col">Content</th>
                            <th scope="col" class="number">Value</th>
                            <th scope="col" class="number">Registers read</th>
                        </tr>
                    </thead>
                    <tbody>
                        {assembly.blocks.map((block) => {
                            const source = sources.find((one) => one.id === block.dataSource);
                            const words = wordsOf(block, source, isLittleEndian);
                            const last = block.outputId + lengthOf(assembly, block.type) - 1;
                            return (
                                <tr key={block.outputId} class={block === selected ? "selected" : ""}>
                                    <td class="number">
                                        <button type="button" class="plain" aria-pressed={block === selected} onClick={() => setQuery({ address: String(block.outputId) })}>
                                            {block.outputId === last ? last : `${block.outputId}–${last}`}
                                        </button>
                                    </td>
                                    <td>{titleOf(block)}</td>
                                    <td class="number" data-value={block.outputId}>{valueText(block, source)}</td>
                                    <td class="number mono">{words?.map(hex).join(" ") ?? ""}</td>
                                </tr>
                            );
                        })}
                    </tbody>
                </table>
            </div>
        </Card>
    );
}

/// What the service was handed last, with its unit.
function valueText(block: Block, source: DataSource | undefined): string {
    const delivered = deliveredOf(source, block.outputId);
    if (source === undefined || delivered === undefined || source.type !== "Measurement") {
        return "";
    }
    if (block.type === "Decision") {
        return String(delivered.decision ?? "–");
    }
    return delivered.value === null ? "no value" : `${numberText(delivered.value, 3)} ${source.unit}`.trim();
}

function SourceInput({ id, value, sources, edit }: { id: string; value: string; sources: DataSource[]; edit: (value: string) => void }) {
    if (sources.length === 0) {
        return <input id={id} value={value} spellcheck={false} maxLength={256} onInput={(event) => edit(event.currentTarget.value)} />;
    }
    return (
        <select id={id} value={value} onChange={(event) => edit(event.currentTarget.value)}>
            {value === "" && <option value="">choose a source</option>}
            {sources.map((source) => <option key={source.id} value={source.id}>{source.displayName} ({source.id})</option>)}
        </select>
    );
}

/// The chosen block: move it, give it another source, remove it.
function BlockCard({ assembly, sources, block, want }: Props & { block: Block; want: (wanted: Wanted) => void }) {
    const id = useId();
    const [address, setAddress] = useState(String(block.outputId));
    const [source, setSource] = useState(block.dataSource ?? "");
    const [shifts, setShifts] = useState(false);
    const type = assembly.supportedBlockTypes.find((one) => one.type === block.type);
    const isChanged = address !== String(block.outputId) || source !== (block.dataSource ?? "");
    const isAllowed = mayActAs("engineer");
    const change = (event: Event) => {
        event.preventDefault();
        const newParams = { outputId: Number(address), ...(type?.hasDataSource === true ? { dataSource: source } : {}) };
        const command = { command: "update", arguments: { outputId: block.outputId, newParams, autoShift: shifts } };
        want({ title: `Change the block at ${block.outputId}`, command, selects: address });
    };
    const remove = () => want({
        title: `Remove the block at ${block.outputId}`,
        command: { command: "remove", arguments: { outputIdList: [{ outputId: block.outputId }] } },
        selects: "",
    });
    return (
        <Card title={`Block at ${block.outputId}`}>
            <p class="quiet">{block.displayName}, {type?.registerCount ?? "?"} registers{type !== undefined && type.minInstanceCount > 0 ? ". It cannot be removed." : "."}</p>
            <form class="form" onSubmit={change} aria-label={`Block at ${block.outputId}`}>
                <div class="field">
                    <label for={`${id}-address`}>First register</label>
                    <input id={`${id}-address`} inputMode="numeric" size={8} value={address} onInput={(event) => setAddress(event.currentTarget.value)} />
                </div>
                {type?.hasDataSource === true && (
                    <div class="field">
                        <label for={`${id}-source`}>Data source</label>
                        <SourceInput id={`${id}-source`} value={source} sources={sources} edit={setSource} />
                    </div>
                )}
                <Shift id={`${id}-shift`} value={shifts} edit={setShifts} />
                <div class="row wide">
                    <button type="submit" class="primary" disabled={!isChanged || !isAllowed}>Change …</button>
                    <button type="button" class="danger" disabled={!isAllowed} onClick={remove}>Remove …</button>
                </div>
            </form>
        </Card>
    );
}

function AddCard({ assembly, sources, want }: Props & { want: (wanted: Wanted) => void }) {
    const id = useId();
    const types = assembly.supportedBlockTypes.filter((one) => one.instanceCount < one.maxInstanceCount);
    const [type, setType] = useState(types.find((one) => one.hasDataSource && one.type === "Measurement")?.type ?? types[0]?.type ?? "");
    const [address, setAddress] = useState("");
    const [source, setSource] = useState("");
    const [shifts, setShifts] = useState(false);
    const firstFree = Math.max(0, ...assembly.blocks.map((block) => block.outputId + lengthOf(assembly, block.type)));
    const chosen = address === "" ? String(firstFree) : address;
    const hasSource = types.find((one) => one.type === type)?.hasDataSource === true;
    const add = (event: Event) => {
        event.preventDefault();
        const block = { type, outputId: Number(chosen), ...(hasSource ? { dataSource: source } : {}) };
        want({ title: `Add a block at ${chosen}`, command: { command: "add", arguments: { blocks: [block], autoShift: shifts } }, selects: chosen });
    };
    return (
        <Card title="Add a block">
            <form class="form" onSubmit={add} aria-label="Add a block">
                <div class="field">
                    <label for={`${id}-type`}>Content</label>
                    <select id={`${id}-type`} value={type} onChange={(event) => setType(event.currentTarget.value)}>
                        {types.map((one) => <option key={one.type} value={one.type}>{one.displayName} ({one.registerCount})</option>)}
                    </select>
                </div>
                <div class="field">
                    <label for={`${id}-address`}>First register</label>
                    <input id={`${id}-address`} inputMode="numeric" size={8} value={chosen} onInput={(event) => setAddress(event.currentTarget.value)} />
                </div>
                {hasSource && (
                    <div class="field">
                        <label for={`${id}-source`}>Data source</label>
                        <SourceInput id={`${id}-source`} value={source} sources={sources} edit={setSource} />
                    </div>
                )}
                <Shift id={`${id}-shift`} value={shifts} edit={setShifts} />
                <div class="row wide">
                    <button type="submit" class="primary" disabled={!mayActAs("engineer") || (hasSource && source === "")}>Add …</button>
                </div>
            </form>
        </Card>
    );
}

function Shift({ id, value, edit }: { id: string; value: boolean; edit: (value: boolean) => void }) {
    return (
        <div class="row wide">
            <input id={id} type="checkbox" checked={value} onChange={(event) => edit(event.currentTarget.checked)} />
            <label for={id}>Make room by moving the blocks behind it</label>
        </div>
    );
}
