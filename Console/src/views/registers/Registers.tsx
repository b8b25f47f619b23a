import { useObservable } from "../../client/observable";
import { route } from "../../client/route";
import { type Resource, useResource } from "../../client/resources";
import type { DataSources, Scanners, SensorState } from "../../client/sensor";
import { Card, Missing, Tabs } from "../../parts/basics";
import type { Control, ControlList } from "../services/controls";
import { AssemblyView } from "./AssemblyView";
import type { Contents } from "./contents";
import { assembliesOf, hasOutputMap } from "./layout";
import { OutputMapView } from "./OutputMapView";
import { ORDERS } from "./words";

const VALUES_MS = 500;
const STATE_MS = 1_000;

/// Where the results lie for the clients of each service: registers, or a map of outputs.
export function Registers() {
    const controls = useResource<ControlList>("/controls");
    const sources = useResource<DataSources>("/datasources", VALUES_MS);
    const { item } = useObservable(route);
    const list = controls.data?._embedded?.item.filter((control) => assembliesOf(control).length > 0 || hasOutputMap(control));
    if (list === undefined) {
        return <Card title="Registers"><Missing problem={controls.problem} /></Card>;
    }
    const withRegisters = list.find((control) => assembliesOf(control).length > 0);
    const chosen = list.find((control) => control.id === item) ?? withRegisters ?? list[0];
    return (
        <div class="stack">
            <Tabs label="Services" view="registers" chosen={chosen?.id ?? ""} parts={list.map(({ id, displayName }) => ({ id, title: displayName }))} />
            {chosen === undefined ? <p>No service has registers or outputs.</p>
                : <Maps key={chosen.id} control={chosen} isOld={controls.isOld || sources.isOld} sources={sources} />}
        </div>
    );
}

function Maps({ control, isOld, sources }: { control: Control; isOld: boolean; sources: Resource<DataSources> }) {
    const path = `/controls/${encodeURIComponent(control.id)}`;
    const assemblies = assembliesOf(control);
    const plc = useResource<{ fingerprint: number }>(`${path}/plc`);
    const sensor = useResource<SensorState>(assemblies.length > 0 ? "/sensor" : null, STATE_MS);
    const scanners = useResource<Scanners>(assemblies.length > 0 ? "/scanners" : null, STATE_MS);
    const contents: Contents = {
        service: control.id,
        order: ORDERS[Number(control.parameters?.["registerOrder"])] ?? "ABCD",
        sources: sources.data?.dataSources ?? [],
        sourcesAtMs: sources.atMs,
        sensor: sensor.data,
        scanners: scanners.data?._embedded?.item ?? [],
        fingerprint: plc.data?.fingerprint ?? null,
    };
    return (
        <>
            {assemblies.map((assembly) => (
                <AssemblyView
                    key={assembly.id}
                    base={`${path}/registerAssemblies/${encodeURIComponent(assembly.id)}`}
                    assembly={assembly}
                    contents={contents}
                    isOld={isOld || sensor.isOld || scanners.isOld}
                />
            ))}
            {hasOutputMap(control) && <OutputMapView base={`${path}/outputs`} contents={contents} isOld={isOld} />}
        </>
    );
}
