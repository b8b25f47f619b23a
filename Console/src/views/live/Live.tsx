import { useEffect, useRef, useState } from "preact/hooks";
import { type FeedTaker, openFeed } from "../../client/feed";
import { useClock, useObservable } from "../../client/observable";
import { connection } from "../../client/rest";
import { useResource } from "../../client/resources";
import type { DataSource, DataSources } from "../../client/sensor";
import { Card, Light, Missing } from "../../parts/basics";
import { Chart } from "../../parts/Chart";
import { numberText } from "../../parts/format";
import { LimitsCard } from "./LimitsCard";
import { HeightMap, type Image } from "./RangeImage";
import { Trend } from "./Trend";

const POINTS = 512;
const ROWS = 100;
const COLUMNS = 120;
const PROFILE_HZ = 20;
const IMAGE_HZ = 10;
const VALUES_MS = 200;
const OLD_MS = 3_000;
const MAX_TREND = 300; // values of a minute

interface Profile {
    frame: number;
    atMs: number;
    x: number[];
    z: (number | null)[];
}

export interface Limits {
    [measurement: string]: { enabled: boolean; minimum: number; maximum: number };
}

/// Profile, range image and measurements as they come. "Freeze" stops the pictures; the sensor goes on.
export function Live() {
    const [isFrozen, setFrozen] = useState(false);
    const [profile, profileRefusal] = useProfile(isFrozen);
    const [image, imageRefusal] = useImage(isFrozen);
    const refusal = profileRefusal !== "" ? profileRefusal : imageRefusal;
    const { isUp } = useObservable(connection);
    const now = useClock(1_000);
    const isOld = !isUp || (profile !== null && !isFrozen && now - profile.atMs > OLD_MS);
    return (
        <div class="stack">
            <div class="row">
                <button type="button" aria-pressed={isFrozen} onClick={() => setFrozen(!isFrozen)}>Freeze</button>
                <span class="number">{profile === null ? "No profile yet" : `Frame ${numberText(profile.frame)}`}</span>
                {isFrozen && <span class="tag">frozen</span>}
                {!isFrozen && isUp && isOld && refusal === "" && <span class="quiet">The sensor sends no new profiles.</span>}
            </div>
            {refusal !== "" && <p class="refusal" role="alert">{refusal}</p>}
            <div class="grid wide-grid">
                <Card title="Profile" isOld={isOld && !isFrozen}>
                    {profile === null ? <p class="quiet">There is no profile before the first scan. Start the sensor on the overview.</p> : (
                        <Chart
                            label={`Profile of frame ${profile.frame} with ${profile.x.length} points`}
                            x={profile.x}
                            lines={[{ label: "z", values: profile.z }]}
                            isTime={false}
                            height={280}
                            xUnit="x (mm)"
                            yUnit="z (mm)"
                        />
                    )}
                </Card>
                <Card title="Range image" isOld={isOld && !isFrozen}>
                    {image === null ? <p class="quiet">There are no profiles yet.</p> : <HeightMap image={image} rows={ROWS} />}
                </Card>
            </div>
            <Measurements isFrozen={isFrozen} />
            <LimitsCard />
            {isFrozen && profile !== null && <FrameTable profile={profile} />}
        </div>
    );
}

/// The newest profile, or the one at which the person froze the page, and why there is no stream.
function useProfile(isFrozen: boolean): [Profile | null, string] {
    const [profile, setProfile] = useState<Profile | null>(null);
    const refusal = useFeed(`/profile?points=${POINTS}&rate=${PROFILE_HZ}`, isFrozen, (message) => {
        const count = message.columns;
        const x = Array.from(message.values.subarray(0, count));
        const z = Array.from(message.values.subarray(count, 2 * count), (value) => (Number.isNaN(value) ? null : value));
        setProfile({ frame: message.frame, atMs: Date.now(), x, z });
    });
    return [profile, refusal];
}

function useImage(isFrozen: boolean): [Image | null, string] {
    const [image, setImage] = useState<Image | null>(null);
    const refusal = useFeed(`/rangeimage?rows=${ROWS}&columns=${COLUMNS}&rate=${IMAGE_HZ}`, isFrozen, ({ rows, columns, x0, spacing, values }, isFirst) => {
        const added = Array.from({ length: rows }, (_, row) => values.slice(row * columns, (row + 1) * columns));
        setImage((before) => {
            const fits = !isFirst && before?.columns === columns && before.x0 === x0 && before.spacing === spacing;
            return { columns, x0, spacing, rows: [...(fits ? before.rows : []), ...added].slice(-ROWS) };
        });
    });
    return [image, refusal];
}

/// Hands on the messages of a stream, and none while the page is hidden or frozen. Returns why there is no stream.
function useFeed(path: string, isFrozen: boolean, take: FeedTaker["take"]): string {
    const taker = useRef(take);
    taker.current = take;
    const isVisible = useVisible();
    const [refusal, refuse] = useState("");
    useEffect(() => {
        if (isFrozen || !isVisible) {
            return;
        }
        return openFeed(path, { take: (message, isFirst) => taker.current(message, isFirst), refuse });
    }, [path, isFrozen, isVisible]);
    return refusal;
}

/// Whether a person can see the page.
function useVisible(): boolean {
    const [isVisible, setVisible] = useState(!document.hidden);
    useEffect(() => {
        const note = () => setVisible(!document.hidden);
        document.addEventListener("visibilitychange", note);
        return () => document.removeEventListener("visibilitychange", note);
    }, []);
    return isVisible;
}

interface Shown {
    source: DataSource;
    values: (number | null)[];
}

/// Each measurement as a number with its trend, limits and decision.
function Measurements({ isFrozen }: { isFrozen: boolean }) {
    const sources = useResource<DataSources>("/datasources", VALUES_MS);
    const limits = useResource<Limits>("/sensor/limits");
    const kept = useRef<{ frozen: DataSource[] | null; trends: Map<string, (number | null)[]>; frame: number | null }>({ frozen: null, trends: new Map(), frame: null });
    const state = kept.current;
    const present = sources.data?.dataSources.filter((source) => source.type === "Measurement");
    if (!isFrozen) {
        state.frozen = null;
    } else if (state.frozen === null) {
        state.frozen = present ?? null;
    }
    const list = state.frozen ?? present;
    const frame = present?.[0]?.frame ?? null;
    if (!isFrozen && present !== undefined && frame !== state.frame) {
        state.frame = frame;
        for (const source of present) {
            state.trends.set(source.id, [...(state.trends.get(source.id) ?? []), source.value ?? null].slice(-MAX_TREND));
        }
    }
    return (
        <Card title="Measurements" isOld={sources.isOld && !isFrozen}>
            {list === undefined ? <Missing problem={sources.problem} /> : (
                <ul class="measurements" aria-label="Measurements">
                    {list.map((source) => (
                        <Measurement key={source.id} shown={{ source, values: state.trends.get(source.id) ?? [] }} limits={limits.data?.[shortName(source.id)]} />
                    ))}
                </ul>
            )}
        </Card>
    );
}

function shortName(id: string): string {
    return id.split("/").at(-1) ?? id;
}

function Measurement({ shown: { source, values }, limits }: { shown: Shown; limits: Limits[string] | undefined }) {
    const isLimited = limits?.enabled === true;
    const decimals = source.unit === "" ? 0 : 3;
    return (
        <li title={source.description}>
            <span class="quiet">{source.displayName}</span>
            <span class="big number" data-measurement={source.id}>
                {source.value === null || source.value === undefined ? "–" : numberText(source.value, decimals)}
                {source.unit !== "" && <span class="unit"> {source.unit}</span>}
            </span>
            <Decision source={source} isLimited={isLimited} />
            <Trend name={source.displayName} values={values} limits={isLimited ? [limits.minimum, limits.maximum] : undefined} />
            {isLimited && <span class="quiet number">limits {limits.minimum} to {limits.maximum} {source.unit}</span>}
        </li>
    );
}

function Decision({ source, isLimited }: { source: DataSource; isLimited: boolean }) {
    if (source.decision === null || source.decision === undefined) {
        return <Light tone="idle">no result</Light>;
    }
    if (source.value === null || source.value === undefined) {
        return <Light tone="warn">no value</Light>;
    }
    return source.decision === 1 ? <Light tone="good">{isLimited ? "within limits" : "pass"}</Light> : <Light tone="bad">outside limits</Light>;
}

/// The points of one profile as a table.
function FrameTable({ profile }: { profile: Profile }) {
    return (
        <Card title={`Points of frame ${profile.frame}`}>
            <div class="tablebox tall" tabIndex={0} role="group" aria-label="Points">
                <table>
                    <thead>
                        <tr>
                            <th scope="col" class="number">Point</th>
                            <th scope="col" class="number">x (mm)</th>
                            <th scope="col" class="number">z (mm)</th>
                        </tr>
                    </thead>
                    <tbody>
                        {profile.x.map((x, index) => {
                            const z = profile.z[index];
                            return (
                                <tr key={index}>
                                    <td class="number">{index + 1}</td>
                                    <td class="number">{x.toFixed(3)}</td>
                                    <td class="number">{z === null || z === undefined ? "no point" : z.toFixed(3)}</td>
                                </tr>
                            );
                        })}
                    </tbody>
                </table>
            </div>
        </Card>
    );
}
