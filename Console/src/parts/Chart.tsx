import { useEffect, useRef } from "preact/hooks";
import uPlot from "uplot";
import "uplot/dist/uPlot.min.css";

export interface Line {
    label: string;
    values: (number | null)[];
}

const COLOURS = ["--line-0", "--line-1", "--line-2", "--line-3", "--line-4", "--line-5"];

export function colourOf(index: number): string {
    return COLOURS[index % COLOURS.length] ?? "--line-0";
}

interface Props {
    label: string; // for screen readers
    x: number[];
    lines: Line[];
    isTime: boolean;
    height: number;
    xUnit?: string;
    yUnit?: string;
    limits?: [number, number] | undefined; // of the y axis
}

/// Lines over a common x axis. The canvas has a text for screen readers; numbers stand in a table of the view.
export function Chart(props: Props) {
    const box = useRef<HTMLDivElement>(null);
    const plot = useRef<uPlot | null>(null);
    const names = props.lines.map((line) => line.label).join("\n");
    const data = [props.x, ...props.lines.map((line) => line.values)] as uPlot.AlignedData;
    useEffect(() => {
        const place = box.current;
        if (place === null) {
            return;
        }
        const made = new uPlot(optionsOf(props, place), data, place);
        plot.current = made;
        const observer = new ResizeObserver(() => made.setSize({ width: place.clientWidth, height: props.height }));
        observer.observe(place);
        const scheme = matchMedia("(prefers-color-scheme: dark)");
        const redraw = () => made.redraw();
        scheme.addEventListener("change", redraw);
        return () => {
            scheme.removeEventListener("change", redraw);
            observer.disconnect();
            made.destroy();
            plot.current = null;
        };
    }, [names, props.isTime, props.height]);
    useEffect(() => {
        plot.current?.setData(data);
    }, [props.x, props.lines]);
    return <div class="chart" ref={box} role="img" aria-label={props.label} />;
}

function optionsOf(props: Props, place: HTMLElement): uPlot.Options {
    const colour = (name: string) => getComputedStyle(place).getPropertyValue(name).trim();
    const axis = (unit: string | undefined): uPlot.Axis => ({
        stroke: () => colour("--quiet"),
        grid: { stroke: () => colour("--line"), width: 1 },
        ticks: { stroke: () => colour("--line"), width: 1 },
        ...(unit === undefined ? {} : { label: unit, labelSize: 18, labelGap: 0 }),
        font: "12px system-ui, sans-serif",
        labelFont: "12px system-ui, sans-serif",
    });
    return {
        width: place.clientWidth,
        height: props.height,
        legend: { show: false },
        cursor: { drag: { x: false, y: false } },
        scales: { x: { time: props.isTime }, y: { range: (_, low, high) => rangeOf(low, high, props.limits) } },
        axes: [axis(props.xUnit), { ...axis(props.yUnit), size: 62 }],
        series: [{}, ...props.lines.map((line, index) => ({ label: line.label, stroke: () => colour(colourOf(index)), width: 1.5, points: { show: false } }))],
    };
}

/// A range that shows a constant value in its middle.
function rangeOf(low: number | null, high: number | null, limits?: [number, number]): [number, number] {
    if (limits !== undefined) {
        return limits;
    }
    if (low === null || high === null) {
        return [0, 1];
    }
    const room = (high - low) * 0.08 || Math.abs(high) * 0.1 || 1;
    return [low - room, high + room];
}
