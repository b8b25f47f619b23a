import { useEffect, useState } from "preact/hooks";
import { setQuery } from "../../client/route";
import { type Contents, wordsOfBlock } from "./contents";
import { type Assembly, type Block, lengthOf, rowsOf, titleOf } from "./layout";
import { hexOf } from "./words";

const NARROW = "(max-width: 760px)";

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

interface Cell {
    block: Block;
    number: number; // of the block
    word: number | undefined;
}

/// A cell for each register. The table beside it has the same for screen readers and the keyboard.
export function Grid({ assembly, contents, selected }: { assembly: Assembly; contents: Contents; selected: Block | undefined }) {
    const columns = useNarrow() ? 10 : 20;
    const cells = cellsOf(assembly, contents);
    return (
        <div class="registers" aria-hidden="true">
            {rowsOf(assembly, columns).map((start) => (
                <div class="addresses" key={start}>
                    <span class="address">{start}</span>
                    {Array.from({ length: columns }, (_, column) => {
                        const address = start + column;
                        return <CellBox key={column} address={address} cell={cells.get(address)} selected={selected} />;
                    })}
                </div>
            ))}
        </div>
    );
}

function CellBox({ address, cell, selected }: { address: number; cell: Cell | undefined; selected: Block | undefined }) {
    const classes = cell === undefined ? ["cell"] : [
        "cell", "used", `tint${cell.number % 6}`,
        cell.block.outputId === address ? "first" : "",
        cell.block === selected ? "selected" : "",
    ];
    return (
        <span
            class={classes.join(" ")}
            data-register={address}
            title={cell === undefined ? `${address}: free` : `${address}: ${titleOf(cell.block)}`}
            onClick={() => setQuery({ address: String(address) })}
        >
            {cell?.word === undefined ? "" : hexOf(cell.word)}
        </span>
    );
}

function cellsOf(assembly: Assembly, contents: Contents): Map<number, Cell> {
    const cells = new Map<number, Cell>();
    assembly.blocks.forEach((block, number) => {
        const words = wordsOfBlock(block, contents);
        for (let offset = 0; offset < lengthOf(assembly, block.type); ++offset) {
            cells.set(block.outputId + offset, { block, number, word: words[offset] });
        }
    });
    return cells;
}
