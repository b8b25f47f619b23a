import { useState } from "preact/hooks";
import { useObservable } from "../../client/observable";
import { connection } from "../../client/rest";
import { route, setQuery } from "../../client/route";
import { Card } from "../../parts/basics";
import { Chart, colourOf } from "../../parts/Chart";
import { numberText } from "../../parts/format";
import { history, ratesOf, type Series } from "./series";

const MAX_CHOSEN = 6;
const FIRST_CHOICE = /result_sets_total|results_total|profiles_total/;

/// Any number of any service over the last 15 minutes.
export function Metrics() {
    const { times, series } = useObservable(history);
    const { query } = useObservable(route);
    const { isUp } = useObservable(connection);
    const [filter, setFilter] = useState("");
    const asked = query.getAll("show").flatMap((text) => text.split("|")).filter((key) => key !== "");
    const first = [...series.keys()].find((key) => FIRST_CHOICE.test(key)) ?? [...series.keys()][0];
    const chosen = query.has("show") ? asked : first === undefined ? [] : [first];
    const shown = chosen.map((key) => series.get(key)).filter((one): one is Series => one !== undefined);
    const choose = (key: string, isChosen: boolean) => {
        const next = isChosen ? [...chosen, key].slice(-MAX_CHOSEN) : chosen.filter((one) => one !== key);
        setQuery({ show: next.length === 0 ? "|" : next.join("|") });
    };
    const words = filter.toLowerCase();
    const found = [...series.values()].filter((one) => `${one.key} ${one.help}`.toLowerCase().includes(words));
    return (
        <div class="stack">
            <Card title="The last 15 minutes" isOld={!isUp}>
                <p class="quiet">Collected since this page was opened, every 5 seconds. Counters are shown as the change in a second.</p>
                {times.length < 2 ? <p>Collecting …</p> : (
                    <Chart
                        label={`Lines of ${shown.map((one) => one.help).join("; ")}`}
                        x={times}
                        lines={shown.map((one) => ({ label: one.key, values: one.isCounter ? ratesOf(times, one.values) : one.values }))}
                        isTime
                        height={300}
                    />
                )}
                <Chosen series={shown} times={times} remove={(key) => choose(key, false)} />
            </Card>
            <Card title="Numbers">
                <div class="field">
                    <label for="metric-filter">Search</label>
                    <input id="metric-filter" type="search" value={filter} onInput={(event) => setFilter(event.currentTarget.value)} />
                </div>
                <div class="tablebox tall" tabIndex={0} role="group" aria-label="Numbers">
                    <table>
                        <thead>
                            <tr>
                                <th scope="col">Show</th>
                                <th scope="col">Number</th>
                                <th scope="col" class="number">Now</th>
                            </tr>
                        </thead>
                        <tbody>
                            {found.map((one) => (
                                <tr key={one.key}>
                                    <td><input type="checkbox" aria-label={`Show ${one.key}`} checked={chosen.includes(one.key)} onChange={(event) => choose(one.key, event.currentTarget.checked)} /></td>
                                    <td>{one.help}<br /><span class="quiet mono">{one.key}</span></td>
                                    <td class="number" data-series={one.key}>{lastText(one)}</td>
                                </tr>
                            ))}
                        </tbody>
                    </table>
                </div>
            </Card>
        </div>
    );
}

function lastText(series: Series): string {
    const last = series.values.at(-1);
    return last === null || last === undefined ? "–" : numberText(last);
}

/// The chosen numbers with their colours.
function Chosen({ series, times, remove }: { series: Series[]; times: number[]; remove: (key: string) => void }) {
    return (
        <ul class="list legend" aria-label="Shown numbers">
            {series.map((one, index) => {
                const rate = one.isCounter ? ratesOf(times, one.values).at(-1) : undefined;
                return (
                    <li key={one.key}>
                        <span class={`swatch ${colourOf(index).slice(2)}`} aria-hidden="true" />
                        <span class="grow">{one.help} <span class="quiet mono">{one.key}</span></span>
                        <span class="number">{rate === undefined ? lastText(one) : rate === null ? "–" : `${numberText(rate, 2)} /s`}</span>
                        <button type="button" class="plain" aria-label={`Do not show ${one.key}`} onClick={() => remove(one.key)}>✕</button>
                    </li>
                );
            })}
        </ul>
    );
}
