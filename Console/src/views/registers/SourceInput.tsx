import type { DataSource } from "../../client/sensor";

interface Props {
    id: string;
    value: string;
    sources: DataSource[];
    isList?: boolean; // the block takes several sources
    edit: (value: string) => void;
}

/// Chooses a data source from the list, or takes it as text where there is no list.
export function SourceInput({ id, value, sources, isList, edit }: Props) {
    if (sources.length === 0 || isList === true) {
        return (
            <>
                <input id={id} value={value} spellcheck={false} aria-describedby={`${id}-hint`} onInput={(event) => edit(event.currentTarget.value)} />
                <span class="quiet hint" id={`${id}-hint`}>{isList === true ? "up to 16 sources with commas between them" : "the name of the source"}</span>
            </>
        );
    }
    const isKnown = value === "" || sources.some((source) => source.id === value);
    return (
        <select id={id} value={value} onChange={(event) => edit(event.currentTarget.value)}>
            {value === "" && <option value="">choose a source</option>}
            {!isKnown && <option value={value}>{value}</option>}
            {sources.map((source) => <option key={source.id} value={source.id}>{source.displayName} ({source.id})</option>)}
        </select>
    );
}
