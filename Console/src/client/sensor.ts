/// The documents of the sensor: see the page on REST.

export interface Delivered {
    value?: number | null;
    decision?: number;
    stamp?: Stamp; // of a stamp, instead of the two before
    frame: number | null;
    ageSec: number;
}

export interface Stamp {
    timeUsec: number;
    encoder: number;
    inputs: number;
}

export interface Destination {
    protocol: string;
    enabled: boolean;
    outputId: number | string;
    registers: number | null;
    type: string | null;
    registerAssembly: string | null;
    topic: string | null;
    delivered: Delivered | null;
}

export interface DataSource {
    id: string;
    displayName: string;
    description: string;
    type: string;
    unit: string;
    value?: number | null;
    decision?: number | null;
    stamp?: Stamp | null; // of a stamp, instead of the two before
    frame: number | null;
    ageSec: number | null;
    destinations: Destination[];
}

export interface DataSources {
    dataSources: DataSource[];
}

export interface Operation {
    number: number;
    what: string;
    argument: string;
    who: string;
    from: string;
    since: string;
    seconds: number;
    result: "running" | "done" | "failed";
    status: number | null;
    text: string;
}

export interface Operations {
    operations: Operation[];
}

export interface SensorState {
    state: "ready" | "running" | "error";
    job: string;
    scanner: string;
    alignment: "notAligned" | "aligning" | "aligned";
    upTimeSec: number;
    profiles: { setRateHz: number; rateHz: number; taken: number; missed: number };
    results: { sets: number; dropped: number; protocols: { id: string; enabled: boolean; sets: number; dropped: number }[] };
    operation: { what: string; protocol: string | null; seconds: number } | null;
    authority: {
        rest: "always" | "whenIdle" | "never";
        holder: string;
        mayCommand: boolean;
        waitSeconds: number | null;
        lastCommand: { protocol: string; secondsAgo: number } | null;
    };
    outputs: {
        digital: { index: number; enabled: boolean; high: boolean; pulses: number; pulseAgeSec: number | null }[];
        analog: { index: number; enabled: boolean; milliamperes: number }[];
        serial: { index: number; enabled: boolean; bytes: number; last: string }[];
    };
    inputs: { index: number; enabled: boolean; high: boolean }[];
}

/// The document of all scanners.
export interface Scanners {
    _embedded?: { item: Scanner[] };
}

export interface Scanner {
    id: string;
    alignment: SensorState["alignment"];
    info: { currentEncoderValue: number; currentSyncTime: number; laserEnabled: boolean } | null;
}

export const ALIGNMENTS: Record<SensorState["alignment"], string> = { notAligned: "not aligned", aligning: "being aligned", aligned: "aligned" };

/// The last result that a running service took for an output.
export function deliveredOf(source: DataSource | undefined, service: string, outputId: number | string): Delivered | undefined {
    const place = source?.destinations.find((one) => one.protocol === service && one.outputId === outputId);
    return place?.enabled === true ? place.delivered ?? undefined : undefined;
}
