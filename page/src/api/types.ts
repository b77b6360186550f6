import type { Fault } from "@/lib/faults";
import type { Point } from "@/lib/geometry";
import type { JsonObject } from "@/lib/json";

/** What the server answers; see api/openapi.json. */

export type StreamState = "disabled" | "starting" | "running" | "waiting" | "ended";

export interface StreamStatus {
    id: string;
    state: StreamState;
    /** Why it waits; empty when nothing is wrong. */
    problem: string;
    frames: number;
    objects: number;
    frames_per_second: number;
    /** 0 before the first frame. */
    width: number;
    height: number;
    restarts: number;
    losses: Record<string, number>;
    calibrated: boolean;
}

export interface ServerInfo {
    version: string;
    safe_mode?: string | null;
    token_required?: boolean;
}

export interface AlgorithmInfo {
    type_name: string;
    name: string;
    kind: string;
    problem?: string;
}

/** A problem document (RFC 9457). */
export interface Problem {
    title?: string;
    status?: number;
    detail?: string;
    faults?: Fault[];
}

export interface GroundMark {
    from: Point;
    to: Point;
    metres: number;
    tolerance?: number;
}

export interface VerticalMark {
    foot: Point;
    top: Point;
    metres: number;
    tolerance?: number;
}

export type Parameter = "tilt" | "roll" | "height_m" | "vertical_fov";

export interface References {
    size: Point;
    ground: GroundMark[];
    vertical: VerticalMark[];
    fixed: Partial<Record<Parameter, number>>;
    click_error: number;
}

export interface Residual {
    name: string;
    kind: string;
    metres: number;
    /** Nothing where the answer does not see it. */
    measured: number | null;
    off: number | null;
    standard_error: number | null;
    looks_wrong: boolean;
}

export interface GridLine {
    from: Point;
    to: Point;
    label: string;
    /** Nothing where there is no label. */
    label_at: Point | null;
}

export interface CalibrationAnswer {
    calibration: Record<Parameter, number> & { covariance?: number[][] };
    standard_errors: Partial<Record<Parameter, number>>;
    residuals: Residual[];
    warnings: string[];
    horizon: { from: Point; to: Point } | null;
    grid: GridLine[];
}

export interface DetectedObject extends JsonObject {
    detection: { label: string; confidence: number; bounding_box: Record<string, number> };
    area: number;
}
