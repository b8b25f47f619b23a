import type { Tone } from "../../parts/basics";
import type { Schema } from "../../parts/schema";

/// A service, as "/controls" shows it.
export interface Control {
    id: string;
    displayName: string;
    enabled: boolean;
    status: number;
    parameters?: Record<string, unknown>;
    _schema?: Schema;
    _links: Record<string, unknown>;
    _embedded?: Record<string, unknown>;
}

export interface ControlList {
    _embedded?: { item: Control[] };
}

const STATES: { tone: Tone; text: string }[] = [
    { tone: "good", text: "Running" },
    { tone: "idle", text: "Stopped" },
    { tone: "warn", text: "Starting" },
    { tone: "warn", text: "Stopping" },
    { tone: "bad", text: "Failed to start" },
    { tone: "bad", text: "Failed to stop" },
];

export function stateOf(control: Control): { tone: Tone; text: string } {
    return STATES[control.status] ?? { tone: "warn", text: `State ${control.status}` };
}
