import { useId, useState } from "preact/hooks";
import { mayActAs } from "../../client/rest";
import { useResource } from "../../client/resources";
import { type DataSource, deliveredOf } from "../../client/sensor";
import { Card, Missing } from "../../parts/basics";
import { Consequence } from "./Consequence";
import { type Contents, valueText } from "./contents";
import type { OutputMap } from "./layout";
import { SourceInput } from "./SourceInput";
import { type Command, undoOfOutputs } from "./undo";

interface Props {
    base: string;
    contents: Contents;
    isOld: boolean;
}

type Id = number | string;

/// The outputs of a service: which source goes out under which name or number.
export function OutputMapView({ base, contents, isOld }: Props) {
    const { service, sources, fingerprint } = contents;
    const outputs = useResource<OutputMap>(base);
    const [wanted, setWanted] = useState<{ title: string; command: Command } | null>(null);
    const map = outputs.data?.map;
    if (map === undefined) {
        return <Card title="Outputs"><Missing problem={outputs.problem} /></Card>;
    }
    const hasNumbers = typeof map[0]?.outputId === "number";
    return (
        <>
            <Card
                title="Outputs"
                isOld={isOld || outputs.isOld}
                actions={hasNumbers && (
                    <button type="button" disabled={!mayActAs("engineer")} onClick={() => setWanted({ title: "Close the gaps", command: { command: "compactId", arguments: {} } })}>
                        Compact …
                    </button>
                )}
            >
                <div class="tablebox" tabIndex={0} role="group" aria-label="Outputs">
                    <table>
                        <thead>
                            <tr>
                                <th scope="col">{hasNumbers ? "Id" : "Name"}</th>
                                <th scope="col">Data source</th>
                                <th scope="col" class="number">Value</th>
                                <th scope="col"><span class="hidden">Change</span></th>
                            </tr>
                        </thead>
                        <tbody>
                            {map.map((one) => <Row key={one.outputId} id={one.outputId} sourceId={one.source} service={service} sources={sources} want={setWanted} />)}
                        </tbody>
                    </table>
                </div>
            </Card>
            <AddOutput hasNumbers={hasNumbers} map={map} sources={sources} want={setWanted} />
            {wanted !== null && (
                <Consequence
                    {...wanted}
                    base={base}
                    fingerprint={fingerprint}
                    undoOf={(preview) => undoOfOutputs(preview, map)}
                    onDone={() => void outputs.reload()}
                    onClose={() => setWanted(null)}
                />
            )}
        </>
    );
}

type Want = (wanted: { title: string; command: Command }) => void;

function Row({ id, sourceId, service, sources, want }: { id: Id; sourceId: string; service: string; sources: DataSource[]; want: Want }) {
    const [name, setName] = useState<string | null>(null);
    const source = sources.find((one) => one.id === sourceId);
    const delivered = deliveredOf(source, service, id);
    const field = useId();
    const rename = (event: Event) => {
        event.preventDefault();
        const next: Id = typeof id === "number" ? Number(name) : (name ?? "");
        want({ title: `Rename ${id}`, command: { command: "updateId", arguments: { map: [{ outputId: id }, { outputId: next }] } } });
        setName(null);
    };
    const remove = () => want({ title: `Remove ${id}`, command: { command: "remove", arguments: { outputId: id } } });
    return (
        <tr>
            <td>
                {name === null ? id : (
                    <form class="row" onSubmit={rename} aria-label={`Rename ${id}`}>
                        <label class="hidden" for={field}>New name</label>
                        <input id={field} value={name} maxLength={256} onInput={(event) => setName(event.currentTarget.value)} />
                        <button type="submit" class="primary">Rename …</button>
                        <button type="button" onClick={() => setName(null)}>Cancel</button>
                    </form>
                )}
            </td>
            <td>{source?.displayName ?? sourceId} <span class="quiet">{source === undefined ? "" : sourceId}</span></td>
            <td class="number">{source?.type === "Measurement" && valueText(delivered, source.unit)}</td>
            <td>
                {name === null && (
                    <div class="row end tight">
                        <button type="button" class="plain" aria-label={`Rename ${id}`} disabled={!mayActAs("engineer")} onClick={() => setName(String(id))}>Rename</button>
                        <button type="button" class="plain" aria-label={`Remove ${id}`} disabled={!mayActAs("engineer")} onClick={remove}>Remove</button>
                    </div>
                )}
            </td>
        </tr>
    );
}

function AddOutput({ hasNumbers, map, sources, want }: { hasNumbers: boolean; map: OutputMap["map"]; sources: DataSource[]; want: Want }) {
    const id = useId();
    const [name, setName] = useState("");
    const [source, setSource] = useState("");
    const free = sources.filter((one) => !map.some((entry) => entry.source === one.id));
    const add = (event: Event) => {
        event.preventDefault();
        const outputId: Id = hasNumbers ? Number(name) : name;
        want({ title: `Add ${name}`, command: { command: "add", arguments: { outputId, source } } });
    };
    return (
        <Card title="Add an output">
            <form class="form" onSubmit={add} aria-label="Add an output">
                <div class="field">
                    <label for={`${id}-name`}>{hasNumbers ? "Id" : "Name"}</label>
                    <input id={`${id}-name`} value={name} maxLength={256} spellcheck={false} onInput={(event) => setName(event.currentTarget.value)} />
                </div>
                <div class="field">
                    <label for={`${id}-source`}>Data source</label>
                    <SourceInput id={`${id}-source`} value={source} sources={free} edit={setSource} />
                </div>
                <div class="row wide">
                    <button type="submit" class="primary" disabled={!mayActAs("engineer") || name === "" || source === ""}>Add …</button>
                </div>
            </form>
        </Card>
    );
}
