import type { ComponentChildren } from "preact";
import { setQuery } from "../../client/route";
import { Card, Time } from "../../parts/basics";
import { type Contents, type Field, fieldsOf, orderOf, wordsOfField } from "./contents";
import { type Assembly, type Block, lengthOf, rangeText, titleOf } from "./layout";
import { hexOf } from "./words";

const MAX_LISTED_REGISTERS = 4; // the grid shows those of longer values

interface Props {
    assembly: Assembly;
    contents: Contents;
    selected: Block | undefined;
    isOld: boolean;
}

/// The blocks with what they show, as a table.
export function BlockTable({ assembly, contents, selected, isOld }: Props) {
    return (
        <Card title="Blocks" isOld={isOld}>
            <div class="tablebox" tabIndex={0} role="group" aria-label="Blocks">
                <table>
                    <thead>
                        <tr>
                            <th scope="col">Registers</th>
                            <th scope="col">Content</th>
                            <th scope="col" class="number">Value</th>
                        </tr>
                    </thead>
                    <tbody>
                        {assembly.blocks.map((block) => (
                            <tr key={block.outputId} class={block === selected ? "selected" : ""}>
                                <td class="number">
                                    <button type="button" class="plain" aria-pressed={block === selected} onClick={() => setQuery({ address: String(block.outputId) })}>
                                        {rangeText(block.outputId, lengthOf(assembly, block.type))}
                                    </button>
                                </td>
                                <td>{titleOf(block)}</td>
                                <td class="number" data-value={block.outputId}>{summaryOf(fieldsOf(block, contents))}</td>
                            </tr>
                        ))}
                    </tbody>
                </table>
            </div>
        </Card>
    );
}

/// The main values of a block in one line.
function summaryOf(fields: Field[]): ComponentChildren {
    return fields.filter((one) => one.isMain).map((one, index) => <span key={one.offset}>{index > 0 && ", "}<Text field={one} /></span>);
}

function Text({ field }: { field: Field }) {
    return field.atMs === undefined ? <>{field.text}</> : <Time ms={field.atMs} />;
}

/// Each value of a block, with the registers that a PLC reads for it.
export function FieldTable({ block, contents, isOld }: { block: Block; contents: Contents; isOld: boolean }) {
    const fields = fieldsOf(block, contents);
    const order = orderOf(block, contents);
    if (fields.length === 0) {
        return <p class="quiet">The host does not tell what these registers have now.</p>;
    }
    return (
        <div class={isOld ? "tablebox old" : "tablebox"} tabIndex={0} role="group" aria-label="Values of the block">
            <table>
                <thead>
                    <tr>
                        <th scope="col">Registers</th>
                        <th scope="col">Value</th>
                        <th scope="col">Now</th>
                        <th scope="col">Read as {order}</th>
                    </tr>
                </thead>
                <tbody>
                    {fields.map((one) => (
                        <tr key={one.offset}>
                            <td>{rangeText(block.outputId + one.offset, one.count)}</td>
                            <td>{one.title}</td>
                            <td data-field={one.title}>{one.atMs !== undefined && <><Time ms={one.atMs} /> </>}<span class={one.atMs === undefined ? "" : "quiet"}>{one.text}</span></td>
                            <td class="mono">{one.count <= MAX_LISTED_REGISTERS && wordsOfField(one, order).map(hexOf).join(" ")}</td>
                        </tr>
                    ))}
                </tbody>
            </table>
        </div>
    );
}
