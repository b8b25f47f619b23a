import { useObservable } from "../../client/observable";
import { hrefOf, route } from "../../client/route";
import { useResource } from "../../client/resources";
import type { DataSources } from "../../client/sensor";
import { Card, Missing } from "../../parts/basics";
import type { Control, ControlList } from "../services/controls";
import { AssemblyView } from "./AssemblyView";
import { assembliesOf, hasOutputMap } from "./layout";
import { OutputMapView } from "./OutputMapView";

const VALUES_MS = 500;

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
            <ul class="tabs" aria-label="Services">
                {list.map((control) => (
                    <li key={control.id}>
                        <a href={hrefOf("registers", control.id)} aria-current={control === chosen ? "true" : undefined}>{control.displayName}</a>
                    </li>
                ))}
            </ul>
            {chosen === undefined ? <p>No service has registers or outputs.</p> : (
                <Maps key={chosen.id} control={chosen} isOld={controls.isOld || sources.isOld} sources={sources.data?.dataSources ?? []} />
            )}
        </div>
    );
}

function Maps({ control, isOld, sources }: { control: Control; isOld: boolean; sources: DataSources["dataSources"] }) {
    const path = `/controls/${encodeURIComponent(control.id)}`;
    const plc = useResource<{ fingerprint: number }>(`${path}/plc`);
    const fingerprint = plc.data?.fingerprint ?? null;
    return (
        <>
            {assembliesOf(control).map((assembly) => (
                <AssemblyView
                    key={assembly.id}
                    base={`${path}/registerAssemblies/${encodeURIComponent(assembly.id)}`}
                    assembly={assembly}
                    isLittleEndian={control.parameters?.["registerOrder"] === 1}
                    sources={sources}
                    isOld={isOld}
                    fingerprint={fingerprint}
                />
            ))}
            {hasOutputMap(control) && (
                <OutputMapView base={`${path}/outputs`} service={control.id} sources={sources} isOld={isOld} fingerprint={fingerprint} />
            )}
        </>
    );
}
