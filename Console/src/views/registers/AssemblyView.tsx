import { useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { mayActAs } from "../../client/rest";
import { route, setQuery } from "../../client/route";
import { Card } from "../../parts/basics";
import { AddCard, BlockCard, type Wanted } from "./BlockForms";
import { BlockTable } from "./BlockTable";
import { Consequence } from "./Consequence";
import type { Contents } from "./contents";
import { Grid } from "./Grid";
import { type Assembly, blockAt } from "./layout";
import { undoOfBlocks } from "./undo";
import type { Order } from "./words";

interface Props {
    base: string;
    assembly: Assembly;
    contents: Contents;
    isOld: boolean;
}

const COMPACT: Wanted = { title: "Move all blocks together", command: { command: "compact", arguments: { startingOutputId: 0 } }, selects: "" };

/// The registers of an assembly: a grid of addresses, a table of blocks, and the commands for them.
export function AssemblyView({ base, assembly, contents, isOld }: Props) {
    const [wanted, setWanted] = useState<Wanted | null>(null);
    const address = useObservable(route).query.get("address") ?? "";
    const selected = address === "" ? undefined : blockAt(assembly, Number(address));
    const { outputIdMin, outputIdMax } = assembly.attributes;
    return (
        <>
            <Card
                title={assembly.displayName}
                isOld={isOld}
                actions={<button type="button" disabled={!mayActAs("engineer")} onClick={() => setWanted(COMPACT)}>Compact …</button>}
            >
                <p class="quiet">
                    Registers {outputIdMin} to {outputIdMax}, byte order {contents.order}: {orderText(contents.order)}.
                    {contents.fingerprint !== null && <> Fingerprint <span class="number">{contents.fingerprint}</span>.</>}
                </p>
                <Grid assembly={assembly} contents={contents} selected={selected} />
            </Card>
            <div class="grid wide-grid">
                <BlockTable assembly={assembly} contents={contents} selected={selected} isOld={isOld} />
                <div class="stack">
                    {selected !== undefined && (
                        <BlockCard key={JSON.stringify(selected)} assembly={assembly} contents={contents} isOld={isOld} block={selected} want={setWanted} />
                    )}
                    <AddCard assembly={assembly} contents={contents} want={setWanted} />
                </div>
            </div>
            {wanted !== null && (
                <Consequence
                    title={wanted.title}
                    base={base}
                    command={wanted.command}
                    fingerprint={contents.fingerprint}
                    undoOf={(preview) => undoOfBlocks(preview, assembly.blocks)}
                    onDone={() => setQuery({ address: wanted.selects })}
                    onClose={() => setWanted(null)}
                />
            )}
        </>
    );
}

function orderText(order: Order): string {
    const isHighFirst = order === "ABCD" || order === "BADC";
    const isSwapped = order === "BADC" || order === "DCBA";
    return `the ${isHighFirst ? "high" : "low"} register of a number comes first${isSwapped ? ", and in each register the low byte" : ""}`;
}
