/// Numbers and times as people read them.

const TIME = new Intl.DateTimeFormat(undefined, { hour: "2-digit", minute: "2-digit", second: "2-digit", hourCycle: "h23" });
const DAY = new Intl.DateTimeFormat(undefined, { year: "numeric", month: "2-digit", day: "2-digit" });

/// 93784 seconds as "1 d 02:03:04".
export function durationText(seconds: number): string {
    const whole = Math.max(0, Math.floor(seconds));
    const pad = (value: number) => String(value).padStart(2, "0");
    const days = Math.floor(whole / 86_400);
    const time = `${pad(Math.floor(whole / 3_600) % 24)}:${pad(Math.floor(whole / 60) % 60)}:${pad(whole % 60)}`;
    return days > 0 ? `${days} d ${time}` : time;
}

/// The time of day in the local zone; with the day unless it is today.
export function timeText(ms: number): string {
    const date = new Date(ms);
    const isToday = date.toDateString() === new Date().toDateString();
    return isToday ? TIME.format(date) : `${DAY.format(date)} ${TIME.format(date)}`;
}

/// The same time in UTC, for the title of an element.
export function utcText(ms: number): string {
    return `${new Date(ms).toISOString().replace("T", " ").slice(0, 19)} UTC`;
}

export function bytesText(bytes: number): string {
    const units = ["B", "KiB", "MiB", "GiB"];
    let value = bytes;
    let unit = 0;
    while (value >= 1024 && unit + 1 < units.length) {
        value /= 1024;
        unit += 1;
    }
    return `${unit === 0 ? value : value.toFixed(1)} ${units[unit]}`;
}

/// A number with groups of digits, "12 345", or with a fixed number of decimals.
export function numberText(value: number, decimals?: number): string {
    const text = decimals === undefined ? String(value) : value.toFixed(decimals);
    const [whole = "", fraction] = text.split(".");
    const grouped = whole.replace(/\B(?=(\d{3})+$)/g, "\u202f");
    return fraction === undefined ? grouped : `${grouped}.${fraction}`;
}

/// A measurement with its unit: to a thousandth, and a number without a unit whole.
export function measuredText(value: number, unit: string): string {
    return unit === "" ? numberText(value, 0) : `${numberText(value, 3)} ${unit}`;
}
