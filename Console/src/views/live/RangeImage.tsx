import { useEffect, useRef } from "preact/hooks";
import { colourOf } from "./colours";

/// The newest rows of heights, the oldest first.
export interface Image {
    columns: number;
    x0: number;
    spacing: number;
    rows: Float32Array[];
}

/// The lowest and the highest point; a flat image has a range of a millimetre.
export function rangeOf(image: Image): [number, number] {
    let [low, high] = [Infinity, -Infinity];
    for (const row of image.rows) {
        for (const z of row) {
            if (!Number.isNaN(z)) {
                low = Math.min(low, z);
                high = Math.max(high, z);
            }
        }
    }
    return low > high ? [0, 1] : high - low < 1 ? [low, low + 1] : [low, high];
}

/// The range image as a height map, the newest row at the bottom, with the bar that explains the colours.
export function HeightMap({ image, rows }: { image: Image; rows: number }) {
    const canvas = useRef<HTMLCanvasElement>(null);
    const [low, high] = rangeOf(image);
    useEffect(() => {
        const context = canvas.current?.getContext("2d");
        if (context !== null && context !== undefined && image.columns > 0) {
            draw(context, image, rows, low, high);
        }
    }, [image]);
    const last = image.x0 + image.spacing * (image.columns - 1);
    return (
        <div class="heightmap">
            <canvas
                ref={canvas}
                width={Math.max(1, image.columns)}
                height={rows}
                role="img"
                aria-label={`Height map of the last ${image.rows.length} profiles, from ${low.toFixed(1)} to ${high.toFixed(1)} mm`}
            />
            <ColourBar low={low} high={high} />
            <p class="quiet number scale"><span>x {image.x0.toFixed(1)} mm</span><span>{last.toFixed(1)} mm</span></p>
        </div>
    );
}

function draw(context: CanvasRenderingContext2D, image: Image, rows: number, low: number, high: number): void {
    const pixels = context.createImageData(image.columns, rows);
    image.rows.forEach((row, index) => {
        const start = (rows - image.rows.length + index) * image.columns * 4;
        row.forEach((z, column) => {
            if (!Number.isNaN(z)) {
                pixels.data.set([...colourOf((z - low) / (high - low)), 255], start + column * 4);
            }
        });
    });
    context.putImageData(pixels, 0, 0);
}

function ColourBar({ low, high }: { low: number; high: number }) {
    const canvas = useRef<HTMLCanvasElement>(null);
    useEffect(() => {
        const context = canvas.current?.getContext("2d");
        if (context === null || context === undefined) {
            return;
        }
        const pixels = context.createImageData(1, 100);
        for (let row = 0; row < 100; ++row) {
            pixels.data.set([...colourOf(1 - row / 99), 255], row * 4);
        }
        context.putImageData(pixels, 0, 0);
    }, []);
    return (
        <div class="colourbar number">
            <span>{high.toFixed(1)} mm</span>
            <canvas ref={canvas} width={1} height={100} aria-hidden="true" />
            <span>{low.toFixed(1)} mm</span>
        </div>
    );
}
