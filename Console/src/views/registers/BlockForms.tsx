import { useId, useState } from "preact/hooks";
import { mayActAs } from "../../client/rest";
import { Card } from "../../parts/basics";
import { FieldTable } from "./BlockTable";
import type { Contents } from "./contents";
import { type Assembly, type Block, lengthOf } from "./layout";
import { SourceInput } from "./SourceInput";
import type { Command } from "./undo";
import { type Order, ORDERS } from "./words";

/// A change that the person wants to look at.
export interface Wanted {
    title: string;
    command: Command;
    selects: string; // the address that is selected afterwards
}

interface Props {
    assembly: Assembly;
    contents: Contents;
    want: (wanted: Wanted) => void;
}

const LIST_TYPES = ["DecisionBits", "ResultQueue"]; // of several sources

/// The chosen block: its values, and a form that moves it, gives it another source or order, or removes it.
export function BlockCard({ assembly, contents, isOld, block, want }: Props & { block: Block; isOld: boolean }) {
    const type = assembly.supportedBlockTypes.find((one) => one.type === block.type);
    const canGo = type === undefined || type.minInstanceCount === 0;
    return (
        <Card title={`Block at ${block.outputId}`}>
            <p class="quiet">{block.displayName}, {type?.registerCount ?? "?"} registers{canGo ? "." : ". It cannot be removed."}</p>
            <FieldTable block={block} contents={contents} isOld={isOld} />
            <BlockForm assembly={assembly} contents={contents} block={block} want={want} />
        </Card>
    );
}

function BlockForm({ assembly, contents, block, want }: Props & { block: Block }) {
    const id = useId();
    const [address, setAddress] = useState(String(block.outputId));
    const [source, setSource] = useState(block.dataSource ?? "");
    const [order, setOrder] = useState<Order | "">(block.order ?? "");
    const [shifts, setShifts] = useState(false);
    const hasSource = assembly.supportedBlockTypes.find((one) => one.type === block.type)?.hasDataSource === true;
    const isChanged = address !== String(block.outputId) || source !== (block.dataSource ?? "") || order !== (block.order ?? "");
    const isAllowed = mayActAs("engineer");
    const change = (event: Event) => {
        event.preventDefault();
        const newParams = {
            outputId: numberOrText(address),
            ...(hasSource ? { dataSource: source } : {}),
            ...(order === (block.order ?? "") ? {} : { order: order === "" ? "default" : order }),
        };
        const command = { command: "update", arguments: { outputId: block.outputId, newParams, autoShift: shifts } };
        want({ title: `Change the block at ${block.outputId}`, command, selects: address });
    };
    const remove = () => want({
        title: `Remove the block at ${block.outputId}`,
        command: { command: "remove", arguments: { outputIdList: [{ outputId: block.outputId }] } },
        selects: "",
    });
    return (
        <form class="form" onSubmit={change} aria-label={`Block at ${block.outputId}`}>
            <AddressField id={`${id}-address`} value={address} edit={setAddress} />
            {hasSource && <SourceField id={`${id}-source`} type={block.type} value={source} contents={contents} edit={setSource} />}
            {block.order !== undefined && <OrderField id={`${id}-order`} value={order} contents={contents} edit={setOrder} />}
            <Shift id={`${id}-shift`} value={shifts} edit={setShifts} />
            <div class="row wide">
                <button type="submit" class="primary" disabled={!isChanged || !isAllowed}>Change …</button>
                <button type="button" class="danger" disabled={!isAllowed} onClick={remove}>Remove …</button>
            </div>
        </form>
    );
}

/// A form for a further block.
export function AddCard({ assembly, contents, want }: Props) {
    const id = useId();
    const types = assembly.supportedBlockTypes.filter((one) => one.instanceCount < one.maxInstanceCount);
    const [wanted, setWanted] = useState("Measurement");
    const [address, setAddress] = useState("");
    const [source, setSource] = useState("");
    const [shifts, setShifts] = useState(false);
    const type = types.find((one) => one.type === wanted) ?? types[0];
    const firstFree = Math.max(0, ...assembly.blocks.map((block) => block.outputId + lengthOf(assembly, block.type)));
    const chosen = address === "" ? String(firstFree) : address;
    const hasSource = type?.hasDataSource === true;
    const add = (event: Event) => {
        event.preventDefault();
        const block = { type: type?.type, outputId: numberOrText(chosen), ...(hasSource ? { dataSource: source } : {}) };
        want({ title: `Add a block at ${chosen}`, command: { command: "add", arguments: { blocks: [block], autoShift: shifts } }, selects: chosen });
    };
    return (
        <Card title="Add a block">
            <form class="form" onSubmit={add} aria-label="Add a block">
                <div class="field">
                    <label for={`${id}-type`}>Content</label>
                    <select id={`${id}-type`} value={type?.type} onChange={(event) => setWanted(event.currentTarget.value)}>
                        {types.map((one) => <option key={one.type} value={one.type}>{one.displayName} ({one.registerCount})</option>)}
                    </select>
                </div>
                <AddressField id={`${id}-address`} value={chosen} edit={setAddress} />
                {hasSource && <SourceField id={`${id}-source`} type={wanted} value={source} contents={contents} edit={setSource} />}
                <Shift id={`${id}-shift`} value={shifts} edit={setShifts} />
                <div class="row wide">
                    <button type="submit" class="primary" disabled={!mayActAs("engineer") || type === undefined || (hasSource && source === "")}>Add …</button>
                </div>
            </form>
        </Card>
    );
}

function AddressField({ id, value, edit }: { id: string; value: string; edit: (value: string) => void }) {
    return (
        <div class="field">
            <label for={id}>First register</label>
            <input id={id} inputMode="numeric" size={8} value={value} onInput={(event) => edit(event.currentTarget.value)} />
        </div>
    );
}

function SourceField({ id, type, value, contents, edit }: { id: string; type: string; value: string; contents: Contents; edit: (value: string) => void }) {
    return (
        <div class="field">
            <label for={id}>Data source</label>
            <SourceInput id={id} value={value} sources={contents.sources} isList={LIST_TYPES.includes(type)} edit={edit} />
        </div>
    );
}

function OrderField({ id, value, contents, edit }: { id: string; value: Order | ""; contents: Contents; edit: (value: Order | "") => void }) {
    return (
        <div class="field">
            <label for={id}>Byte order</label>
            <select id={id} value={value} onChange={(event) => edit(event.currentTarget.value as Order | "")}>
                <option value="">as the service ({contents.order})</option>
                {ORDERS.map((one) => <option key={one} value={one}>{one}</option>)}
            </select>
        </div>
    );
}

/// What the person has typed as a number; another text goes to the service, which says what is wrong with it.
function numberOrText(text: string): number | string {
    return /^\d+$/.test(text.trim()) ? Number(text) : text;
}

function Shift({ id, value, edit }: { id: string; value: boolean; edit: (value: boolean) => void }) {
    return (
        <div class="row wide check">
            <input id={id} type="checkbox" checked={value} onChange={(event) => edit(event.currentTarget.checked)} />
            <label for={id}>Make room by moving the blocks behind it</label>
        </div>
    );
}
