import { ALIGNMENTS, type DataSource, type Delivered, deliveredOf, type Scanner, type SensorState } from "../../client/sensor";
import { durationText, measuredText, numberText } from "../../parts/format";
import type { Block } from "./layout";
import { type Order, realOf, thousandthsOf, wordsOf } from "./words";

/// A value within a block, as people read it and as a PLC reads it.
export interface Field {
    title: string;
    offset: number; // of its first register in the block
    count: number; // registers
    text: string; // empty: the host does not tell it
    atMs?: number; // of a time
    numbers: bigint[]; // of equal size, one behind the other; empty: the host does not tell them
    isMain?: boolean; // stands for the block in a list
}

/// What the host tells of the contents of registers.
export interface Contents {
    service: string;
    order: Order; // of the service
    sources: DataSource[];
    sourcesAtMs: number; // when the sources were read
    sensor: SensorState | undefined;
    scanners: Scanner[];
    fingerprint: number | null;
}

const RUN_STATES: Record<SensorState["state"], [bigint, string]> = { ready: [0n, "stands still"], running: [1n, "scanning"], error: [2n, "error"] };
const ALIGNMENT_NUMBERS: Record<SensorState["alignment"], bigint> = { notAligned: 0n, aligning: 1n, aligned: 2n };
const JOB_REGISTERS = 64;
const NOTHING = "no result yet"; // a service may take results only while a client is connected
const FRESH_SEC = 2; // an older result is shown with its age

/// The order of a block: its own, or that of the service.
export function orderOf(block: Block, contents: Contents): Order {
    return block.order === undefined || block.order === "" ? contents.order : block.order;
}

export function sourceOf(block: Block, { sources }: Contents): DataSource | undefined {
    return sources.find((one) => one.id === block.dataSource);
}

/// The values of a block. Empty for a type that the console does not know.
export function fieldsOf(block: Block, contents: Contents): Field[] {
    switch (block.type) {
    case "System":
        return systemFields(contents.sensor);
    case "Scanner":
        return scannerFields(contents.scanners.find((one) => one.id === block.scannerId) ?? contents.scanners[0]);
    case "Stamp":
        return stampFields(block, contents);
    case "MapFingerprint":
        return contents.fingerprint === null ? [] : [field("Fingerprint", 0, 2, [BigInt(contents.fingerprint)], String(contents.fingerprint), true)];
    case "Measurement":
    case "MeasurementValue":
    case "MeasurementReal":
    case "Decision":
        return measurementFields(block, contents);
    default:
        return [];
    }
}

function field(title: string, offset: number, count: number, numbers: bigint[], text: string, isMain = false): Field {
    return { title, offset, count, numbers, text, isMain };
}

function systemFields(sensor: SensorState | undefined): Field[] {
    if (sensor === undefined) {
        return [];
    }
    const [state, words] = RUN_STATES[sensor.state];
    const job = [...new TextEncoder().encode(sensor.job)].slice(0, JOB_REGISTERS).map(BigInt);
    const padded = [...job, ...new Array<bigint>(JOB_REGISTERS - job.length).fill(0n)];
    return [
        field("Up-time", 0, 4, [BigInt(sensor.upTimeSec)], durationText(sensor.upTimeSec)),
        field("Run state", 4, 1, [state], words, true),
        field("Characters of the job's name", 5, 1, [BigInt(job.length)], String(job.length)),
        field("Name of the job", 6, JOB_REGISTERS, padded, sensor.job, true),
        field("Link of the network", 70, 1, [], ""),
        field("Problems", 71, 1, [], ""),
    ];
}

function scannerFields(scanner: Scanner | undefined): Field[] {
    if (scanner?.info === undefined || scanner.info === null) {
        return [];
    }
    const { currentEncoderValue: encoder, currentSyncTime: time, laserEnabled } = scanner.info;
    return [
        field("Encoder", 0, 4, [BigInt(encoder)], numberText(encoder)),
        field("Synchronisation time", 4, 4, [BigInt(time)], numberText(time)),
        field("Alignment", 8, 1, [ALIGNMENT_NUMBERS[scanner.alignment]], ALIGNMENTS[scanner.alignment], true),
        field("Laser", 9, 1, [laserEnabled ? 1n : 0n], laserEnabled ? "laser on" : "laser off", true),
    ];
}

function stampFields(block: Block, contents: Contents): Field[] {
    const source = sourceOf(block, contents);
    const delivered = deliveredOf(source, contents.service, block.outputId);
    if (delivered?.stamp === undefined || delivered.frame === null) {
        return [field("Frame", 12, 4, [], NOTHING, true)];
    }
    const { timeUsec, encoder, inputs } = delivered.stamp;
    const levels = ["first", "second"].map((name, bit) => `${name} ${(inputs & (1 << bit)) === 0 ? "low" : "high"}`).join(", ");
    return [
        field("Stamp value", 0, 4, [], ""),
        field("Encoder", 4, 4, [BigInt(encoder)], numberText(encoder)),
        { ...field("Time", 8, 4, [BigInt(timeUsec)], `${numberText(timeUsec)} µs`, true), atMs: contents.sourcesAtMs - delivered.ageSec * 1000 },
        field("Frame", 12, 4, [BigInt(delivered.frame)], `frame ${numberText(delivered.frame)}${ageText(delivered)}`, true),
        field("Digital inputs", 16, 1, [BigInt(inputs)], levels),
    ];
}

function ageText({ ageSec }: Delivered): string {
    return ageSec < FRESH_SEC ? "" : `, ${durationText(ageSec)} ago`;
}

/// The value of a measurement, with its age if it is old.
export function valueText(delivered: Delivered | undefined, unit: string): string {
    const value = delivered?.value;
    return delivered === undefined || value === undefined ? NOTHING : (value === null ? "no value" : measuredText(value, unit)) + ageText(delivered);
}

function measurementFields(block: Block, contents: Contents): Field[] {
    const source = sourceOf(block, contents);
    const delivered = deliveredOf(source, contents.service, block.outputId);
    if (source === undefined) {
        return [];
    }
    const text = valueText(delivered, source.unit);
    if (delivered?.value === undefined) {
        return [field("Value", 0, 1, [], text, true)];
    }
    const { value } = delivered;
    const decision = value === null ? 2n : BigInt(delivered.decision ?? 0);
    const words = value === null ? "no value" : decision === 1n ? "pass" : "outside limits";
    switch (block.type) {
    case "Measurement":
        return [field("Value", 0, 2, [thousandthsOf(value)], text, true), field("Decision", 2, 1, [decision], words)];
    case "MeasurementValue":
        return [field("Value", 0, 2, [thousandthsOf(value)], text, true)];
    case "MeasurementReal":
        return [field("Value", 0, 2, value === null ? [] : [realOf(value)], text, true)];
    default:
        return [field("Decision", 0, 1, [decision], words, true)];
    }
}

/// The registers of a value as a PLC reads them; empty where the host does not tell them.
export function wordsOfField({ numbers, count }: Field, order: Order): number[] {
    return numbers.flatMap((number) => wordsOf(number, count / numbers.length, order));
}

/// The registers of a block from its first one on; holes where the host does not tell them.
export function wordsOfBlock(block: Block, contents: Contents): (number | undefined)[] {
    const words: (number | undefined)[] = [];
    for (const one of fieldsOf(block, contents)) {
        wordsOfField(one, orderOf(block, contents)).forEach((word, index) => (words[one.offset + index] = word));
    }
    return words;
}
