import { useEffect, useRef } from "preact/hooks";

const WIDTH = 240;
const HEIGHT = 44;

/// The last values of a measurement as a small line, with its limits.
export function Trend({ name, values, limits }: { name: string; values: (number | null)[]; limits: [number, number] | undefined }) {
    const canvas = useRef<HTMLCanvasElement>(null);
    const known = values.filter((value): value is number => value !== null);
    const all = [...known, ...(limits ?? [])];
    const low = all.length === 0 ? 0 : Math.min(...all);
    const high = all.length === 0 ? 1 : Math.max(...all);
    useEffect(() => {
        const element = canvas.current;
        const context = element?.getContext("2d");
        if (element !== null && context !== null && context !== undefined) {
            draw(context, getComputedStyle(element), values, low, high, limits);
        }
    });
    const text = known.length === 0 ? `${name}: no values yet` : `${name}: the last ${known.length} values lie between ${Math.min(...known).toFixed(3)} and ${Math.max(...known).toFixed(3)}`;
    return <canvas ref={canvas} class="trend" width={WIDTH} height={HEIGHT} role="img" aria-label={text} />;
}

function draw(context: CanvasRenderingContext2D, style: CSSStyleDeclaration, values: (number | null)[], low: number, high: number, limits?: [number, number]): void {
    const room = (high - low) * 0.1 || 1;
    const y = (value: number) => HEIGHT - 2 - ((value - low + room) / (high - low + 2 * room)) * (HEIGHT - 4);
    context.clearRect(0, 0, WIDTH, HEIGHT);
    context.lineWidth = 1;
    context.strokeStyle = style.getPropertyValue("--bad");
    context.setLineDash([4, 3]);
    for (const limit of limits ?? []) {
        context.beginPath();
        context.moveTo(0, y(limit));
        context.lineTo(WIDTH, y(limit));
        context.stroke();
    }
    context.setLineDash([]);
    context.lineWidth = 1.5;
    context.strokeStyle = style.getPropertyValue("--line-0");
    context.beginPath();
    let isDown = false;
    values.forEach((value, index) => {
        if (value === null) {
            isDown = false;
            return;
        }
        const x = (index / Math.max(1, values.length - 1)) * WIDTH;
        isDown ? context.lineTo(x, y(value)) : context.moveTo(x, y(value));
        isDown = true;
    });
    context.stroke();
}
