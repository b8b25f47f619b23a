import { useEffect, useState } from "preact/hooks";

/// A value that tells its subscribers of each change.
export class Observable<T> {
    private readonly subscribers = new Set<() => void>();

    constructor(private current: T) {}

    get value(): T {
        return this.current;
    }

    set(next: T): void {
        if (next !== this.current) {
            this.current = next;
            this.notify();
        }
    }

    /// Returns the function that ends the subscription.
    subscribe(subscriber: () => void): () => void {
        this.subscribers.add(subscriber);
        return () => this.subscribers.delete(subscriber);
    }

    private notify(): void {
        for (const subscriber of [...this.subscribers]) {
            subscriber();
        }
    }
}

/// The value of an observable; the component is drawn anew when it changes.
export function useObservable<T>(observable: Observable<T>): T {
    const [, redraw] = useState(0);
    const { value } = observable;
    useEffect(() => {
        const drawAnew = () => redraw((count) => count + 1);
        if (observable.value !== value) {
            drawAnew(); // the value has changed since it was drawn
        }
        return observable.subscribe(drawAnew);
    }, [observable]);
    return value;
}

/// Draws the component anew after each period, for texts that depend on the time.
export function useClock(periodMs: number): number {
    const [now, setNow] = useState(Date.now());
    useEffect(() => {
        const timer = setInterval(() => setNow(Date.now()), periodMs);
        return () => clearInterval(timer);
    }, [periodMs]);
    return now;
}
